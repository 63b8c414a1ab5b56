<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>Alert</name>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
</context>
<context>
    <name>DashboardScene</name>
    <message>
        <source>Panels on the network</source>
        <translation>Panels im Netzwerk</translation>
    </message>
    <message>
        <source>*No Device Connected</source>
        <translation>*Kein Gerät verbunden</translation>
    </message>
    <message>
        <source>Settings</source>
        <translation>Einstellungen</translation>
    </message>
    <message>
        <source>No panel connected</source>
        <translation>Kein Panel verbunden</translation>
    </message>
    <message>
        <source>Connect to a panel to cast the screen, use touch and send files.</source>
        <translation>Verbinden Sie sich mit einem Panel, um den Bildschirm zu übertragen, ihn per Touch zu bedienen und Dateien zu senden.</translation>
    </message>
    <message>
        <source>Connect</source>
        <translation>Verbinden</translation>
    </message>
    <message>
        <source>Touch is on</source>
        <translation>Touch ist eingeschaltet</translation>
    </message>
    <message>
        <source>Show this computer&apos;s picture over the cable, then work by touching the panel.</source>
        <translation>Zeigen Sie das Bild dieses Computers über das Kabel an und bedienen Sie ihn dann durch Berühren des Panels.</translation>
    </message>
    <message>
        <source>Facing a problem? Check that the computer and the panel are on the same network.</source>
        <translation>Gibt es ein Problem? Prüfen Sie, ob Computer und Panel im selben Netzwerk sind.</translation>
    </message>
    <message>
        <source>File upload</source>
        <translation>Datei hochladen</translation>
    </message>
    <message>
        <source>Send a file</source>
        <translation>Datei senden</translation>
    </message>
    <message>
        <source>Drag and drop a file here to send it to the panel</source>
        <translation>Ziehen Sie eine Datei hierher, um sie an das Panel zu senden</translation>
    </message>
    <message>
        <source>Upload a file</source>
        <translation>Datei hochladen</translation>
    </message>
    <message>
        <source>Cast the screen to the panel</source>
        <translation>Bildschirm auf das Panel übertragen</translation>
    </message>
    <message>
        <source>Start casting</source>
        <translation>Jetzt übertragen</translation>
    </message>
    <message>
        <source>Show this screen on the panel and work it by touch</source>
        <translation>Bildschirm am Panel zeigen und bedienen</translation>
    </message>
    <message>
        <source>Showing this screen by cable? Switch touch here.</source>
        <translation>Bild über Kabel? Schalten Sie Touch hier ein oder aus.</translation>
    </message>
    <message>
        <source>Wireless touch</source>
        <translation>Touch ohne Kabel</translation>
    </message>
</context>
<context>
    <name>DevicesListScene</name>
    <message>
        <source>Panels nearby</source>
        <translation>Panels in der Nähe</translation>
    </message>
    <message>
        <source>Choose the panel in front of you</source>
        <translation>Wählen Sie das Panel, vor dem Sie stehen</translation>
    </message>
    <message>
        <source>Disconnect</source>
        <translation>Trennen</translation>
    </message>
</context>
<context>
    <name>FileChooser</name>
    <message>
        <source>Upload a file</source>
        <translation>Datei hochladen</translation>
    </message>
    <message>
        <source>Files for the panel</source>
        <translation>Dateien für das Panel</translation>
    </message>
</context>
<context>
    <name>Logic</name>
    <message>
        <source>*No Device Connected</source>
        <translation>*Kein Gerät verbunden</translation>
    </message>
    <message>
        <source>Paired to %1</source>
        <translation>Gekoppelt mit %1</translation>
    </message>
    <message>
        <source>Touchback is enabled now.</source>
        <translation>Touchback ist jetzt eingeschaltet.</translation>
    </message>
    <message>
        <source>To mirror the screen, please go to the AirPlay option on the top menu bar and select the required AirPlay display device.

NOTE: Make sure the screen calibration is done and your mac and device are on the same network.</source>
        <translation>Um den Bildschirm zu übertragen, öffnen Sie bitte die AirPlay-Option in der Menüleiste am oberen Rand und wählen Sie das gewünschte AirPlay-Anzeigegerät aus.

HINWEIS: Achten Sie darauf, dass der Bildschirm kalibriert ist und dass Ihr Mac und das Gerät im selben Netzwerk sind.</translation>
    </message>
    <message>
        <source>Touchback is disabled now.</source>
        <translation>Touchback ist jetzt ausgeschaltet.</translation>
    </message>
    <message>
        <source>If screen mirroring is ON and you don&apos;t need it anymore, please go to the AirPlay option on the top menu bar and select &apos;Stop AirPlay&apos;.</source>
        <translation>Wenn die Bildschirmübertragung noch läuft und Sie sie nicht mehr benötigen, öffnen Sie bitte die AirPlay-Option in der Menüleiste am oberen Rand und wählen Sie „AirPlay beenden“.</translation>
    </message>
    <message>
        <source>Network error</source>
        <translation>Netzwerkfehler</translation>
    </message>
    <message>
        <source>Touchback is disabled. Please check your network connection and then retry.</source>
        <translation>Touchback ist ausgeschaltet. Bitte prüfen Sie Ihre Netzwerkverbindung und versuchen Sie es dann erneut.</translation>
    </message>
    <message>
        <source>Device busy</source>
        <translation>Gerät beschäftigt</translation>
    </message>
    <message>
        <source>Device is currently busy. Please try again.</source>
        <translation>Das Gerät ist gerade beschäftigt. Bitte versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>Success</source>
        <translation>Erfolgreich</translation>
    </message>
    <message>
        <source>File Uploaded successfully.</source>
        <translation>Die Datei wurde erfolgreich hochgeladen.</translation>
    </message>
    <message>
        <source>Failure</source>
        <translation>Fehlgeschlagen</translation>
    </message>
    <message>
        <source>Server error while uploading. Please try again.</source>
        <translation>Serverfehler beim Hochladen. Bitte versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>File Upload failed.</source>
        <translation>Die Datei konnte nicht hochgeladen werden.</translation>
    </message>
    <message>
        <source>Cannot upload</source>
        <translation>Hochladen nicht möglich</translation>
    </message>
    <message>
        <source>File upload feature is not available for your device.</source>
        <translation>Das Hochladen von Dateien ist für Ihr Gerät nicht verfügbar.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; does not fit into the free memory of this computer.</source>
        <translation>„%1“ passt nicht in den freien Arbeitsspeicher dieses Computers.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; cannot be read.</source>
        <translation>„%1“ kann nicht gelesen werden.</translation>
    </message>
    <message>
        <source>Choose one file on this computer that is of one of these kinds: %1.</source>
        <translation>Wählen Sie eine Datei auf diesem Computer, die von einer dieser Arten ist: %1.</translation>
    </message>
    <message>
        <source>Paste Error</source>
        <translation>Fehler beim Einfügen</translation>
    </message>
    <message>
        <source>Sorry, but the past operation failed</source>
        <translation>Leider konnte der Inhalt nicht eingefügt werden</translation>
    </message>
    <message>
        <source>Panel Companion had to stop</source>
        <translation>Panel Companion musste beendet werden</translation>
    </message>
    <message>
        <source>The file to be sent could no longer be read.</source>
        <translation>Die zu sendende Datei konnte nicht mehr gelesen werden.</translation>
    </message>
    <message>
        <source>A file was to be sent, but no panel was paired any more.</source>
        <translation>Eine Datei sollte gesendet werden, aber es war kein Panel mehr gekoppelt.</translation>
    </message>
    <message>
        <source>A panel was needed, but none was paired.</source>
        <translation>Es wurde ein Panel benötigt, aber keines war gekoppelt.</translation>
    </message>
    <message>
        <source>The panel sent an answer that is not text.</source>
        <translation>Das Panel hat eine Antwort gesendet, die kein Text ist.</translation>
    </message>
    <message>
        <source>This computer had no screen that touches could go to.</source>
        <translation>Dieser Computer hatte keinen Bildschirm, auf dem Berührungen ankommen konnten.</translation>
    </message>
    <message>
        <source>A touch could not be turned into mouse input.</source>
        <translation>Eine Berührung konnte nicht in eine Mauseingabe umgesetzt werden.</translation>
    </message>
    <message>
        <source>This computer&apos;s clock shows a time that cannot be right.</source>
        <translation>Die Uhr dieses Computers zeigt eine Zeit, die nicht stimmen kann.</translation>
    </message>
    <message>
        <source>This computer had no memory left.</source>
        <translation>Dieser Computer hatte keinen freien Arbeitsspeicher mehr.</translation>
    </message>
    <message>
        <source>It met an error of its own: %1</source>
        <translation>Im Programm ist ein Fehler aufgetreten: %1</translation>
    </message>
    <message>
        <source>Waiting for permission: pick a screen and allow remote interaction in the desktop&apos;s dialog</source>
        <translation>Warten auf die Erlaubnis: Wählen Sie im Dialog der Arbeitsumgebung einen Bildschirm und erlauben Sie die Fernsteuerung</translation>
    </message>
    <message>
        <source>the desktop stopped sharing the screen</source>
        <translation>Die Arbeitsumgebung hat die Bildschirmfreigabe beendet</translation>
    </message>
    <message>
        <source>the desktop&apos;s portal has gone or was restarted</source>
        <translation>Das Portal der Arbeitsumgebung ist verschwunden oder wurde neu gestartet</translation>
    </message>
    <message>
        <source>remote interaction was not allowed in the desktop&apos;s dialog</source>
        <translation>Die Fernsteuerung wurde im Dialog der Arbeitsumgebung nicht erlaubt</translation>
    </message>
    <message>
        <source>no screen was picked in the desktop&apos;s dialog</source>
        <translation>Im Dialog der Arbeitsumgebung wurde kein Bildschirm gewählt</translation>
    </message>
    <message>
        <source>the desktop&apos;s dialog was cancelled</source>
        <translation>Der Dialog der Arbeitsumgebung wurde abgebrochen</translation>
    </message>
    <message>
        <source>the desktop&apos;s portal failed (%1)</source>
        <translation>Das Portal der Arbeitsumgebung hat versagt (%1)</translation>
    </message>
    <message>
        <source>the desktop no longer takes touches (%1)</source>
        <translation>Die Arbeitsumgebung nimmt keine Berührungen mehr an (%1)</translation>
    </message>
    <message>
        <source>The permission cannot be remembered: %1</source>
        <translation>Die Erlaubnis kann nicht gespeichert werden: %1</translation>
    </message>
    <message>
        <source>Cannot inject input: %1; install xdg-desktop-portal and its backend for this desktop</source>
        <translation>Eingaben sind nicht möglich: %1; installieren Sie xdg-desktop-portal und dessen Backend für diese Arbeitsumgebung</translation>
    </message>
    <message>
        <source>Cannot inject input: %1</source>
        <translation>Eingaben sind nicht möglich: %1</translation>
    </message>
    <message>
        <source>%1

It has been started again. Pick your panel to go on.</source>
        <translation>%1

Das Programm wurde neu gestartet. Wählen Sie Ihr Panel, um fortzufahren.</translation>
    </message>
    <message>
        <source>No touch: %1; turn touch on again to be asked again</source>
        <translation>Kein Touch: %1; schalten Sie Touch erneut ein, um wieder gefragt zu werden</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is not a file on this computer.</source>
        <translation>„%1“ ist keine Datei auf diesem Computer.</translation>
    </message>
    <message>
        <source>On Wayland touches reach X11 programs only; an X11 session has no such limit%1</source>
        <translation>Unter Wayland erreicht Touch nur X11-Programme; in einer X11-Sitzung gilt das nicht%1</translation>
    </message>
</context>
<context>
    <name>SettingsScene</name>
    <message>
        <source>Settings</source>
        <translation>Einstellungen</translation>
    </message>
    <message>
        <source>Frame rate</source>
        <translation>Bildrate</translation>
    </message>
    <message>
        <source>Resolution</source>
        <translation>Auflösung</translation>
    </message>
    <message>
        <source>Video device</source>
        <translation>Videogerät</translation>
    </message>
    <message>
        <source>Built-in screen</source>
        <translation>Eingebauter Bildschirm</translation>
    </message>
    <message>
        <source>Audio device</source>
        <translation>Audiogerät</translation>
    </message>
    <message>
        <source>Default output</source>
        <translation>Standardausgabe</translation>
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
        <translation>Übertragen, berühren und Dateien an Ihr Panel senden</translation>
    </message>
</context>
<context>
    <name>companion::DevicesTableView</name>
    <message>
        <source>Picked</source>
        <translation>Ausgewählt</translation>
    </message>
</context>
<context>
    <name>companion::QtDashboardView</name>
    <message>
        <source>No touch: UDP port 41863 cannot be opened (panelctl doctor says why)</source>
        <translation>Kein Touch: UDP-Port 41863 lässt sich nicht öffnen („panelctl doctor“ nennt den Grund)</translation>
    </message>
    <message>
        <source>Waiting for the first touch</source>
        <translation>Warten auf die erste Berührung</translation>
    </message>
    <message>
        <source>No touch yet: a firewall may block UDP port 41863 (see panelctl doctor)</source>
        <translation>Noch keine Berührung: Vielleicht sperrt eine Firewall den UDP-Port 41863 (siehe „panelctl doctor“)</translation>
    </message>
    <message>
        <source>Touches from %1 are ignored, as that is not the panel</source>
        <translation>Berührungen von %1 werden ignoriert, da dies nicht das Panel ist</translation>
    </message>
    <message>
        <source>Touch works</source>
        <translation>Touch funktioniert</translation>
    </message>
    <message>
        <source>Touch works, but from %1, which is not the panel&apos;s address</source>
        <translation>Touch funktioniert, aber von %1 aus: Das ist nicht die Adresse des Panels</translation>
    </message>
    <message>
        <source>Stop casting</source>
        <translation>Übertragen beenden</translation>
    </message>
    <message>
        <source>Start casting</source>
        <translation>Jetzt übertragen</translation>
    </message>
    <message>
        <source>Touches on the panel work this computer</source>
        <translation>Berührungen auf dem Panel bedienen diesen Computer</translation>
    </message>
    <message>
        <source>Show this screen on the panel and work it by touch</source>
        <translation>Bildschirm am Panel zeigen und bedienen</translation>
    </message>
    <message>
        <source>Stop casting to the panel</source>
        <translation>Übertragung auf das Panel beenden</translation>
    </message>
    <message>
        <source>Cast the screen to the panel</source>
        <translation>Bildschirm auf das Panel übertragen</translation>
    </message>
    <message>
        <source>Drop it to send it</source>
        <translation>Zum Senden loslassen</translation>
    </message>
    <message>
        <source>Send a file</source>
        <translation>Datei senden</translation>
    </message>
    <message>
        <source>&quot;%1&quot; will be sent to the panel that you pick.</source>
        <translation>„%1“ wird an das Panel gesendet, das Sie wählen.</translation>
    </message>
    <message numerus="yes">
        <source>%n files will be sent to the panel that you pick.</source>
        <translation>
            <numerusform>%n Datei wird an das Panel gesendet, das Sie wählen.</numerusform>
            <numerusform>%n Dateien werden an das Panel gesendet, das Sie wählen.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>companion::QtDevicesListView</name>
    <message>
        <source>Looking for panels…</source>
        <translation>Panels werden gesucht…</translation>
    </message>
    <message>
        <source>No panel found yet.

Check that the panel is switched on and on the same network as this computer. “panelctl doctor”, typed into a terminal, shows what else may be wrong.</source>
        <translation>Noch kein Panel gefunden.

Prüfen Sie, ob das Panel eingeschaltet und im selben Netzwerk wie dieser Computer ist. Geben Sie „panelctl doctor“ in ein Terminal ein, um weitere Ursachen zu finden.</translation>
    </message>
</context>
<context>
    <name>companion::UploadProgressBars</name>
    <message>
        <source>Stop uploading %1</source>
        <translation>Senden von %1 abbrechen</translation>
    </message>
    <message>
        <source>Stop this upload</source>
        <translation>Senden abbrechen</translation>
    </message>
    <message>
        <source>Reading %1</source>
        <translation>%1 wird gelesen</translation>
    </message>
    <message>
        <source>Uploading %1</source>
        <translation>%1 wird gesendet</translation>
    </message>
    <message numerus="yes">
        <source>and %n more</source>
        <translation>
            <numerusform>und %n weitere</numerusform>
            <numerusform>und %n weitere</numerusform>
        </translation>
    </message>
</context>
</TS>
