<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="es" sourcelanguage="en">
<context>
    <name>Alert</name>
    <message>
        <source>OK</source>
        <translation>Aceptar</translation>
    </message>
</context>
<context>
    <name>DashboardScene</name>
    <message>
        <source>Panels on the network</source>
        <translation>Paneles de la red</translation>
    </message>
    <message>
        <source>*No Device Connected</source>
        <translation>*Ningún dispositivo conectado</translation>
    </message>
    <message>
        <source>Settings</source>
        <translation>Ajustes</translation>
    </message>
    <message>
        <source>No panel connected</source>
        <translation>Ningún panel conectado</translation>
    </message>
    <message>
        <source>Connect to a panel to cast the screen, use touch and send files.</source>
        <translation>Conéctese a un panel para proyectar la pantalla, usar el control táctil y enviar archivos.</translation>
    </message>
    <message>
        <source>Connect</source>
        <translation>Conectar</translation>
    </message>
    <message>
        <source>Touch is on</source>
        <translation>Control táctil activado</translation>
    </message>
    <message>
        <source>Show this computer&apos;s picture over the cable, then work by touching the panel.</source>
        <translation>Muestre la imagen de este equipo por el cable y manéjelo tocando el panel.</translation>
    </message>
    <message>
        <source>Facing a problem? Check that the computer and the panel are on the same network.</source>
        <translation>¿Algún problema? Compruebe que el equipo y el panel estén en la misma red.</translation>
    </message>
    <message>
        <source>File upload</source>
        <translation>Envío de archivos</translation>
    </message>
    <message>
        <source>Send a file</source>
        <translation>Enviar un archivo</translation>
    </message>
    <message>
        <source>Drag and drop a file here to send it to the panel</source>
        <translation>Arrastre y suelte aquí un archivo para enviarlo al panel</translation>
    </message>
    <message>
        <source>Upload a file</source>
        <translation>Elegir un archivo</translation>
    </message>
    <message>
        <source>Cast the screen to the panel</source>
        <translation>Proyectar la pantalla en el panel</translation>
    </message>
    <message>
        <source>Start casting</source>
        <translation>Iniciar proyección</translation>
    </message>
    <message>
        <source>Show this screen on the panel and work it by touch</source>
        <translation>Mostrar y manejar esta pantalla en el panel</translation>
    </message>
    <message>
        <source>Showing this screen by cable? Switch touch here.</source>
        <translation>¿Imagen por cable? Active o desactive aquí el control táctil.</translation>
    </message>
    <message>
        <source>Wireless touch</source>
        <translation>Control táctil inalámbrico</translation>
    </message>
</context>
<context>
    <name>DevicesListScene</name>
    <message>
        <source>Panels nearby</source>
        <translation>Paneles cercanos</translation>
    </message>
    <message>
        <source>Choose the panel in front of you</source>
        <translation>Elija el panel que tiene delante</translation>
    </message>
    <message>
        <source>Disconnect</source>
        <translation>Desconectar</translation>
    </message>
</context>
<context>
    <name>FileChooser</name>
    <message>
        <source>Upload a file</source>
        <translation>Elegir un archivo</translation>
    </message>
    <message>
        <source>Files for the panel</source>
        <translation>Archivos para el panel</translation>
    </message>
</context>
<context>
    <name>Logic</name>
    <message>
        <source>*No Device Connected</source>
        <translation>*Ningún dispositivo conectado</translation>
    </message>
    <message>
        <source>Paired to %1</source>
        <translation>Vinculado con %1</translation>
    </message>
    <message>
        <source>Touchback is enabled now.</source>
        <translation>Touchback está activado.</translation>
    </message>
    <message>
        <source>To mirror the screen, please go to the AirPlay option on the top menu bar and select the required AirPlay display device.

NOTE: Make sure the screen calibration is done and your mac and device are on the same network.</source>
        <translation>Para duplicar la pantalla, abra la opción AirPlay de la barra de menús superior y seleccione el dispositivo de visualización AirPlay que desee.

NOTA: Asegúrese de que la pantalla esté calibrada y de que su Mac y el dispositivo estén en la misma red.</translation>
    </message>
    <message>
        <source>Touchback is disabled now.</source>
        <translation>Touchback está desactivado.</translation>
    </message>
    <message>
        <source>If screen mirroring is ON and you don&apos;t need it anymore, please go to the AirPlay option on the top menu bar and select &apos;Stop AirPlay&apos;.</source>
        <translation>Si la duplicación de pantalla sigue activada y ya no la necesita, abra la opción AirPlay de la barra de menús superior y seleccione «Detener AirPlay».</translation>
    </message>
    <message>
        <source>Network error</source>
        <translation>Error de red</translation>
    </message>
    <message>
        <source>Touchback is disabled. Please check your network connection and then retry.</source>
        <translation>Touchback está desactivado. Compruebe la conexión de red y vuelva a intentarlo.</translation>
    </message>
    <message>
        <source>Device busy</source>
        <translation>Dispositivo ocupado</translation>
    </message>
    <message>
        <source>Device is currently busy. Please try again.</source>
        <translation>El dispositivo está ocupado en este momento. Vuelva a intentarlo.</translation>
    </message>
    <message>
        <source>Success</source>
        <translation>Envío completado</translation>
    </message>
    <message>
        <source>File Uploaded successfully.</source>
        <translation>El archivo se ha enviado correctamente.</translation>
    </message>
    <message>
        <source>Failure</source>
        <translation>Error</translation>
    </message>
    <message>
        <source>Server error while uploading. Please try again.</source>
        <translation>Error del servidor durante el envío. Vuelva a intentarlo.</translation>
    </message>
    <message>
        <source>File Upload failed.</source>
        <translation>No se ha podido enviar el archivo.</translation>
    </message>
    <message>
        <source>Cannot upload</source>
        <translation>No se puede enviar</translation>
    </message>
    <message>
        <source>File upload feature is not available for your device.</source>
        <translation>El envío de archivos no está disponible para su dispositivo.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; does not fit into the free memory of this computer.</source>
        <translation>«%1» no cabe en la memoria libre de este equipo.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; cannot be read.</source>
        <translation>No se puede leer «%1».</translation>
    </message>
    <message>
        <source>Choose one file on this computer that is of one of these kinds: %1.</source>
        <translation>Elija un archivo de este equipo que sea de uno de estos tipos: %1.</translation>
    </message>
    <message>
        <source>Paste Error</source>
        <translation>Error al pegar</translation>
    </message>
    <message>
        <source>Sorry, but the past operation failed</source>
        <translation>Lo sentimos, no se ha podido pegar el contenido</translation>
    </message>
    <message>
        <source>Panel Companion had to stop</source>
        <translation>Panel Companion ha tenido que cerrarse</translation>
    </message>
    <message>
        <source>The file to be sent could no longer be read.</source>
        <translation>El archivo que se iba a enviar ya no se podía leer.</translation>
    </message>
    <message>
        <source>A file was to be sent, but no panel was paired any more.</source>
        <translation>Se iba a enviar un archivo, pero ya no había ningún panel vinculado.</translation>
    </message>
    <message>
        <source>A panel was needed, but none was paired.</source>
        <translation>Se necesitaba un panel, pero no había ninguno vinculado.</translation>
    </message>
    <message>
        <source>The panel sent an answer that is not text.</source>
        <translation>El panel ha enviado una respuesta que no es texto.</translation>
    </message>
    <message>
        <source>This computer had no screen that touches could go to.</source>
        <translation>Este equipo no tenía ninguna pantalla a la que enviar los toques.</translation>
    </message>
    <message>
        <source>A touch could not be turned into mouse input.</source>
        <translation>No se ha podido convertir un toque en una acción del ratón.</translation>
    </message>
    <message>
        <source>This computer&apos;s clock shows a time that cannot be right.</source>
        <translation>El reloj de este equipo muestra una hora que no puede ser correcta.</translation>
    </message>
    <message>
        <source>This computer had no memory left.</source>
        <translation>A este equipo no le quedaba memoria libre.</translation>
    </message>
    <message>
        <source>It met an error of its own: %1</source>
        <translation>Se ha producido un error interno: %1</translation>
    </message>
    <message>
        <source>Waiting for permission: pick a screen and allow remote interaction in the desktop&apos;s dialog</source>
        <translation>Esperando permiso: elija una pantalla y permita la interacción remota en el diálogo del escritorio</translation>
    </message>
    <message>
        <source>the desktop stopped sharing the screen</source>
        <translation>el escritorio ha dejado de compartir la pantalla</translation>
    </message>
    <message>
        <source>the desktop&apos;s portal has gone or was restarted</source>
        <translation>el portal del escritorio ha desaparecido o se ha reiniciado</translation>
    </message>
    <message>
        <source>remote interaction was not allowed in the desktop&apos;s dialog</source>
        <translation>no se ha permitido la interacción remota en el diálogo del escritorio</translation>
    </message>
    <message>
        <source>no screen was picked in the desktop&apos;s dialog</source>
        <translation>no se ha elegido ninguna pantalla en el diálogo del escritorio</translation>
    </message>
    <message>
        <source>the desktop&apos;s dialog was cancelled</source>
        <translation>se ha cancelado el diálogo del escritorio</translation>
    </message>
    <message>
        <source>the desktop&apos;s portal failed (%1)</source>
        <translation>ha fallado el portal del escritorio (%1)</translation>
    </message>
    <message>
        <source>the desktop no longer takes touches (%1)</source>
        <translation>el escritorio ya no acepta los toques (%1)</translation>
    </message>
    <message>
        <source>The permission cannot be remembered: %1</source>
        <translation>No se puede recordar el permiso: %1</translation>
    </message>
    <message>
        <source>Cannot inject input: %1; install xdg-desktop-portal and its backend for this desktop</source>
        <translation>No se puede simular el ratón: %1; instale xdg-desktop-portal y su componente para este escritorio</translation>
    </message>
    <message>
        <source>Cannot inject input: %1</source>
        <translation>No se puede simular el ratón: %1</translation>
    </message>
    <message>
        <source>%1

It has been started again. Pick your panel to go on.</source>
        <translation>%1

El programa se ha vuelto a iniciar. Elija su panel para continuar.</translation>
    </message>
    <message>
        <source>No touch: %1; turn touch on again to be asked again</source>
        <translation>Sin control táctil: %1; vuelva a activarlo para que se le pregunte de nuevo</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is not a file on this computer.</source>
        <translation>«%1» no es un archivo de este equipo.</translation>
    </message>
    <message>
        <source>On Wayland touches reach X11 programs only; an X11 session has no such limit%1</source>
        <translation>En Wayland el control táctil solo llega a los programas X11; una sesión X11 no tiene ese límite%1</translation>
    </message>
</context>
<context>
    <name>SettingsScene</name>
    <message>
        <source>Settings</source>
        <translation>Ajustes</translation>
    </message>
    <message>
        <source>Frame rate</source>
        <translation>Fotogramas por segundo</translation>
    </message>
    <message>
        <source>Resolution</source>
        <translation>Resolución</translation>
    </message>
    <message>
        <source>Video device</source>
        <translation>Dispositivo de vídeo</translation>
    </message>
    <message>
        <source>Built-in screen</source>
        <translation>Pantalla integrada</translation>
    </message>
    <message>
        <source>Audio device</source>
        <translation>Dispositivo de audio</translation>
    </message>
    <message>
        <source>Default output</source>
        <translation>Salida predeterminada</translation>
    </message>
</context>
<context>
    <name>SplashScene</name>
    <message>
        <source>Panel Companion</source>
        <translation>Panel Companion</translation>
    </message>
    <message>
        <source>Cast, touch and send files to your panel</source>
        <translation>Proyecte, toque y envíe archivos a su panel</translation>
    </message>
</context>
<context>
    <name>companion::DevicesTableView</name>
    <message>
        <source>Picked</source>
        <translation>Elegido</translation>
    </message>
</context>
<context>
    <name>companion::QtDashboardView</name>
    <message>
        <source>No touch: UDP port 41863 cannot be opened (panelctl doctor says why)</source>
        <translation>Sin control táctil: no se puede abrir el puerto UDP 41863 («panelctl doctor» indica el motivo)</translation>
    </message>
    <message>
        <source>Waiting for the first touch</source>
        <translation>Esperando el primer toque</translation>
    </message>
    <message>
        <source>No touch yet: a firewall may block UDP port 41863 (see panelctl doctor)</source>
        <translation>Aún no llega ningún toque: quizá un cortafuegos bloquee el puerto UDP 41863 (consulte «panelctl doctor»)</translation>
    </message>
    <message>
        <source>Touches from %1 are ignored, as that is not the panel</source>
        <translation>Los toques de %1 se descartan porque no es el panel</translation>
    </message>
    <message>
        <source>Touch works</source>
        <translation>El control táctil funciona</translation>
    </message>
    <message>
        <source>Touch works, but from %1, which is not the panel&apos;s address</source>
        <translation>El control táctil funciona, pero desde %1, que no es la dirección del panel</translation>
    </message>
    <message>
        <source>Stop casting</source>
        <translation>Detener proyección</translation>
    </message>
    <message>
        <source>Start casting</source>
        <translation>Iniciar proyección</translation>
    </message>
    <message>
        <source>Touches on the panel work this computer</source>
        <translation>Los toques en el panel manejan este equipo</translation>
    </message>
    <message>
        <source>Show this screen on the panel and work it by touch</source>
        <translation>Mostrar y manejar esta pantalla en el panel</translation>
    </message>
    <message>
        <source>Stop casting to the panel</source>
        <translation>Detener la proyección en el panel</translation>
    </message>
    <message>
        <source>Cast the screen to the panel</source>
        <translation>Proyectar la pantalla en el panel</translation>
    </message>
    <message>
        <source>Drop it to send it</source>
        <translation>Suelte para enviar</translation>
    </message>
    <message>
        <source>Send a file</source>
        <translation>Enviar un archivo</translation>
    </message>
    <message>
        <source>&quot;%1&quot; will be sent to the panel that you pick.</source>
        <translation>«%1» se enviará al panel que elija.</translation>
    </message>
    <message numerus="yes">
        <source>%n files will be sent to the panel that you pick.</source>
        <translation>
            <numerusform>%n archivo se enviará al panel que elija.</numerusform>
            <numerusform>%n archivos se enviarán al panel que elija.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>companion::QtDevicesListView</name>
    <message>
        <source>Looking for panels…</source>
        <translation>Buscando paneles…</translation>
    </message>
    <message>
        <source>No panel found yet.

Check that the panel is switched on and on the same network as this computer. “panelctl doctor”, typed into a terminal, shows what else may be wrong.</source>
        <translation>Aún no se ha encontrado ningún panel.

Compruebe que el panel esté encendido y en la misma red que este equipo. Si escribe «panelctl doctor» en un terminal, verá qué más puede fallar.</translation>
    </message>
</context>
<context>
    <name>companion::UploadProgressBars</name>
    <message>
        <source>Stop uploading %1</source>
        <translation>Cancelar el envío de %1</translation>
    </message>
    <message>
        <source>Stop this upload</source>
        <translation>Cancelar este envío</translation>
    </message>
    <message>
        <source>Reading %1</source>
        <translation>Leyendo %1</translation>
    </message>
    <message>
        <source>Uploading %1</source>
        <translation>Enviando %1</translation>
    </message>
    <message numerus="yes">
        <source>and %n more</source>
        <translation>
            <numerusform>y %n más</numerusform>
            <numerusform>y %n más</numerusform>
        </translation>
    </message>
</context>
</TS>
