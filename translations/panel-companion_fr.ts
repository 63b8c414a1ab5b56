<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="fr" sourcelanguage="en">
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
        <translation>Écrans interactifs du réseau</translation>
    </message>
    <message>
        <source>*No Device Connected</source>
        <translation>*Aucun appareil connecté</translation>
    </message>
    <message>
        <source>Settings</source>
        <translation>Réglages</translation>
    </message>
    <message>
        <source>No panel connected</source>
        <translation>Aucun écran interactif connecté</translation>
    </message>
    <message>
        <source>Connect to a panel to cast the screen, use touch and send files.</source>
        <translation>Connectez-vous à un écran interactif pour diffuser l’image, utiliser le tactile et envoyer des fichiers.</translation>
    </message>
    <message>
        <source>Connect</source>
        <translation>Se connecter</translation>
    </message>
    <message>
        <source>Touch is on</source>
        <translation>Le tactile est activé</translation>
    </message>
    <message>
        <source>Show this computer&apos;s picture over the cable, then work by touching the panel.</source>
        <translation>Affichez l’image de cet ordinateur par le câble, puis commandez-le en touchant l’écran interactif.</translation>
    </message>
    <message>
        <source>Facing a problem? Check that the computer and the panel are on the same network.</source>
        <translation>Un problème&#xa0;? Vérifiez que l’ordinateur et l’écran interactif sont sur le même réseau.</translation>
    </message>
    <message>
        <source>File upload</source>
        <translation>Envoi de fichier</translation>
    </message>
    <message>
        <source>Send a file</source>
        <translation>Envoyer un fichier</translation>
    </message>
    <message>
        <source>Drag and drop a file here to send it to the panel</source>
        <translation>Glissez-déposez un fichier ici pour l’envoyer à l’écran interactif</translation>
    </message>
    <message>
        <source>Upload a file</source>
        <translation>Choisir un fichier</translation>
    </message>
    <message>
        <source>Cast the screen to the panel</source>
        <translation>Diffuser l’écran sur l’écran interactif</translation>
    </message>
    <message>
        <source>Start casting</source>
        <translation>Démarrer la diffusion</translation>
    </message>
    <message>
        <source>Show this screen on the panel and work it by touch</source>
        <translation>Afficher cet écran et le commander au doigt</translation>
    </message>
    <message>
        <source>Showing this screen by cable? Switch touch here.</source>
        <translation>Affichage par câble&#xa0;? Réglez le tactile ici.</translation>
    </message>
    <message>
        <source>Wireless touch</source>
        <translation>Tactile sans fil</translation>
    </message>
</context>
<context>
    <name>DevicesListScene</name>
    <message>
        <source>Panels nearby</source>
        <translation>Écrans à proximité</translation>
    </message>
    <message>
        <source>Choose the panel in front of you</source>
        <translation>Choisissez l’écran devant lequel vous êtes</translation>
    </message>
    <message>
        <source>Disconnect</source>
        <translation>Se déconnecter</translation>
    </message>
</context>
<context>
    <name>FileChooser</name>
    <message>
        <source>Upload a file</source>
        <translation>Choisir un fichier</translation>
    </message>
    <message>
        <source>Files for the panel</source>
        <translation>Fichiers pour l’écran interactif</translation>
    </message>
</context>
<context>
    <name>Logic</name>
    <message>
        <source>*No Device Connected</source>
        <translation>*Aucun appareil connecté</translation>
    </message>
    <message>
        <source>Paired to %1</source>
        <translation>Associé à %1</translation>
    </message>
    <message>
        <source>Touchback is enabled now.</source>
        <translation>Touchback est maintenant activé.</translation>
    </message>
    <message>
        <source>To mirror the screen, please go to the AirPlay option on the top menu bar and select the required AirPlay display device.

NOTE: Make sure the screen calibration is done and your mac and device are on the same network.</source>
        <translation>Pour recopier l’écran, ouvrez l’option AirPlay de la barre de menus en haut de l’écran et sélectionnez l’appareil d’affichage AirPlay voulu.

REMARQUE&#xa0;: assurez-vous que l’écran est calibré et que votre Mac et l’appareil sont sur le même réseau.</translation>
    </message>
    <message>
        <source>Touchback is disabled now.</source>
        <translation>Touchback est maintenant désactivé.</translation>
    </message>
    <message>
        <source>If screen mirroring is ON and you don&apos;t need it anymore, please go to the AirPlay option on the top menu bar and select &apos;Stop AirPlay&apos;.</source>
        <translation>Si la recopie de l’écran est encore activée et que vous n’en avez plus besoin, ouvrez l’option AirPlay de la barre de menus en haut de l’écran et sélectionnez «&#xa0;Arrêter AirPlay&#xa0;».</translation>
    </message>
    <message>
        <source>Network error</source>
        <translation>Erreur réseau</translation>
    </message>
    <message>
        <source>Touchback is disabled. Please check your network connection and then retry.</source>
        <translation>Touchback est désactivé. Vérifiez votre connexion réseau, puis réessayez.</translation>
    </message>
    <message>
        <source>Device busy</source>
        <translation>Appareil occupé</translation>
    </message>
    <message>
        <source>Device is currently busy. Please try again.</source>
        <translation>L’appareil est actuellement occupé. Veuillez réessayer.</translation>
    </message>
    <message>
        <source>Success</source>
        <translation>Envoi réussi</translation>
    </message>
    <message>
        <source>File Uploaded successfully.</source>
        <translation>Le fichier a bien été envoyé.</translation>
    </message>
    <message>
        <source>Failure</source>
        <translation>Échec</translation>
    </message>
    <message>
        <source>Server error while uploading. Please try again.</source>
        <translation>Erreur du serveur pendant l’envoi. Veuillez réessayer.</translation>
    </message>
    <message>
        <source>File Upload failed.</source>
        <translation>L’envoi du fichier a échoué.</translation>
    </message>
    <message>
        <source>Cannot upload</source>
        <translation>Envoi impossible</translation>
    </message>
    <message>
        <source>File upload feature is not available for your device.</source>
        <translation>L’envoi de fichiers n’est pas disponible pour votre appareil.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; does not fit into the free memory of this computer.</source>
        <translation>«&#xa0;%1&#xa0;» ne tient pas dans la mémoire libre de cet ordinateur.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; cannot be read.</source>
        <translation>Impossible de lire «&#xa0;%1&#xa0;».</translation>
    </message>
    <message>
        <source>Choose one file on this computer that is of one of these kinds: %1.</source>
        <translation>Choisissez sur cet ordinateur un fichier de l’un de ces types&#xa0;: %1.</translation>
    </message>
    <message>
        <source>Paste Error</source>
        <translation>Erreur de collage</translation>
    </message>
    <message>
        <source>Sorry, but the past operation failed</source>
        <translation>Désolé, le collage a échoué</translation>
    </message>
    <message>
        <source>Panel Companion had to stop</source>
        <translation>Panel Companion a dû s’arrêter</translation>
    </message>
    <message>
        <source>The file to be sent could no longer be read.</source>
        <translation>Le fichier à envoyer ne pouvait plus être lu.</translation>
    </message>
    <message>
        <source>A file was to be sent, but no panel was paired any more.</source>
        <translation>Un fichier devait être envoyé, mais plus aucun écran interactif n’était associé.</translation>
    </message>
    <message>
        <source>A panel was needed, but none was paired.</source>
        <translation>Il fallait un écran interactif, mais aucun n’était associé.</translation>
    </message>
    <message>
        <source>The panel sent an answer that is not text.</source>
        <translation>L’écran interactif a envoyé une réponse qui n’est pas du texte.</translation>
    </message>
    <message>
        <source>This computer had no screen that touches could go to.</source>
        <translation>Cet ordinateur n’avait pas d’écran auquel transmettre le toucher.</translation>
    </message>
    <message>
        <source>A touch could not be turned into mouse input.</source>
        <translation>Un toucher n’a pas pu être converti en action de la souris.</translation>
    </message>
    <message>
        <source>This computer&apos;s clock shows a time that cannot be right.</source>
        <translation>L’horloge de cet ordinateur indique une heure impossible.</translation>
    </message>
    <message>
        <source>This computer had no memory left.</source>
        <translation>Cet ordinateur n’avait plus de mémoire libre.</translation>
    </message>
    <message>
        <source>It met an error of its own: %1</source>
        <translation>Une erreur interne s’est produite&#xa0;: %1</translation>
    </message>
    <message>
        <source>Waiting for permission: pick a screen and allow remote interaction in the desktop&apos;s dialog</source>
        <translation>En attente d’autorisation&#xa0;: choisissez un écran et autorisez l’interaction à distance dans la boîte de dialogue du bureau</translation>
    </message>
    <message>
        <source>the desktop stopped sharing the screen</source>
        <translation>le bureau a arrêté le partage d’écran</translation>
    </message>
    <message>
        <source>the desktop&apos;s portal has gone or was restarted</source>
        <translation>le portail du bureau a disparu ou a été redémarré</translation>
    </message>
    <message>
        <source>remote interaction was not allowed in the desktop&apos;s dialog</source>
        <translation>l’interaction à distance n’a pas été autorisée dans la boîte de dialogue du bureau</translation>
    </message>
    <message>
        <source>no screen was picked in the desktop&apos;s dialog</source>
        <translation>aucun écran n’a été choisi dans la boîte de dialogue du bureau</translation>
    </message>
    <message>
        <source>the desktop&apos;s dialog was cancelled</source>
        <translation>la boîte de dialogue du bureau a été annulée</translation>
    </message>
    <message>
        <source>the desktop&apos;s portal failed (%1)</source>
        <translation>le portail du bureau a échoué (%1)</translation>
    </message>
    <message>
        <source>the desktop no longer takes touches (%1)</source>
        <translation>le bureau n’accepte plus le toucher (%1)</translation>
    </message>
    <message>
        <source>The permission cannot be remembered: %1</source>
        <translation>Impossible de mémoriser l’autorisation&#xa0;: %1</translation>
    </message>
    <message>
        <source>Cannot inject input: %1; install xdg-desktop-portal and its backend for this desktop</source>
        <translation>Impossible de simuler la souris&#xa0;: %1&#xa0;; installez xdg-desktop-portal et son module pour ce bureau</translation>
    </message>
    <message>
        <source>Cannot inject input: %1</source>
        <translation>Impossible de simuler la souris&#xa0;: %1</translation>
    </message>
    <message>
        <source>%1

It has been started again. Pick your panel to go on.</source>
        <translation>%1

Le programme a été relancé. Choisissez votre écran interactif pour continuer.</translation>
    </message>
    <message>
        <source>No touch: %1; turn touch on again to be asked again</source>
        <translation>Pas de tactile&#xa0;: %1&#xa0;; réactivez le tactile pour que la question soit posée de nouveau</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is not a file on this computer.</source>
        <translation>«&#xa0;%1&#xa0;» n’est pas un fichier de cet ordinateur.</translation>
    </message>
    <message>
        <source>On Wayland touches reach X11 programs only; an X11 session has no such limit%1</source>
        <translation>Sous Wayland, le tactile n’atteint que les programmes X11&#xa0;; une session X11 n’a pas cette limite%1</translation>
    </message>
</context>
<context>
    <name>SettingsScene</name>
    <message>
        <source>Settings</source>
        <translation>Réglages</translation>
    </message>
    <message>
        <source>Frame rate</source>
        <translation>Images par seconde</translation>
    </message>
    <message>
        <source>Resolution</source>
        <translation>Résolution</translation>
    </message>
    <message>
        <source>Video device</source>
        <translation>Périphérique vidéo</translation>
    </message>
    <message>
        <source>Built-in screen</source>
        <translation>Écran intégré</translation>
    </message>
    <message>
        <source>Audio device</source>
        <translation>Périphérique audio</translation>
    </message>
    <message>
        <source>Default output</source>
        <translation>Sortie par défaut</translation>
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
        <translation>Diffusez, touchez et envoyez des fichiers à votre écran interactif</translation>
    </message>
</context>
<context>
    <name>companion::DevicesTableView</name>
    <message>
        <source>Picked</source>
        <translation>Choisi</translation>
    </message>
</context>
<context>
    <name>companion::QtDashboardView</name>
    <message>
        <source>No touch: UDP port 41863 cannot be opened (panelctl doctor says why)</source>
        <translation>Pas de tactile&#xa0;: impossible d’ouvrir le port UDP 41863 («&#xa0;panelctl doctor&#xa0;» dit pourquoi)</translation>
    </message>
    <message>
        <source>Waiting for the first touch</source>
        <translation>En attente du premier toucher</translation>
    </message>
    <message>
        <source>No touch yet: a firewall may block UDP port 41863 (see panelctl doctor)</source>
        <translation>Aucun toucher reçu&#xa0;: un pare-feu bloque peut-être le port UDP 41863 (voir «&#xa0;panelctl doctor&#xa0;»)</translation>
    </message>
    <message>
        <source>Touches from %1 are ignored, as that is not the panel</source>
        <translation>Les touchers venant de %1 sont ignorés, car ce n’est pas l’écran interactif</translation>
    </message>
    <message>
        <source>Touch works</source>
        <translation>Le tactile fonctionne</translation>
    </message>
    <message>
        <source>Touch works, but from %1, which is not the panel&apos;s address</source>
        <translation>Le tactile fonctionne, mais depuis %1, qui n’est pas l’adresse de l’écran interactif</translation>
    </message>
    <message>
        <source>Stop casting</source>
        <translation>Arrêter la diffusion</translation>
    </message>
    <message>
        <source>Start casting</source>
        <translation>Démarrer la diffusion</translation>
    </message>
    <message>
        <source>Touches on the panel work this computer</source>
        <translation>L’écran interactif commande cet ordinateur au doigt</translation>
    </message>
    <message>
        <source>Show this screen on the panel and work it by touch</source>
        <translation>Afficher cet écran et le commander au doigt</translation>
    </message>
    <message>
        <source>Stop casting to the panel</source>
        <translation>Arrêter la diffusion sur l’écran interactif</translation>
    </message>
    <message>
        <source>Cast the screen to the panel</source>
        <translation>Diffuser l’écran sur l’écran interactif</translation>
    </message>
    <message>
        <source>Drop it to send it</source>
        <translation>Déposez pour envoyer</translation>
    </message>
    <message>
        <source>Send a file</source>
        <translation>Envoyer un fichier</translation>
    </message>
    <message>
        <source>&quot;%1&quot; will be sent to the panel that you pick.</source>
        <translation>«&#xa0;%1&#xa0;» sera envoyé à l’écran interactif que vous choisirez.</translation>
    </message>
    <message numerus="yes">
        <source>%n files will be sent to the panel that you pick.</source>
        <translation>
            <numerusform>%n fichier sera envoyé à l’écran interactif que vous choisirez.</numerusform>
            <numerusform>%n fichiers seront envoyés à l’écran interactif que vous choisirez.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>companion::QtDevicesListView</name>
    <message>
        <source>Looking for panels…</source>
        <translation>Recherche d’écrans interactifs…</translation>
    </message>
    <message>
        <source>No panel found yet.

Check that the panel is switched on and on the same network as this computer. “panelctl doctor”, typed into a terminal, shows what else may be wrong.</source>
        <translation>Aucun écran trouvé pour l’instant.

Vérifiez que l’écran interactif est allumé et sur le même réseau que cet ordinateur. «&#xa0;panelctl doctor&#xa0;», saisi dans un terminal, indique les autres causes possibles.</translation>
    </message>
</context>
<context>
    <name>companion::UploadProgressBars</name>
    <message>
        <source>Stop uploading %1</source>
        <translation>Arrêter l’envoi de %1</translation>
    </message>
    <message>
        <source>Stop this upload</source>
        <translation>Arrêter cet envoi</translation>
    </message>
    <message>
        <source>Reading %1</source>
        <translation>Lecture de %1</translation>
    </message>
    <message>
        <source>Uploading %1</source>
        <translation>Envoi de %1</translation>
    </message>
    <message numerus="yes">
        <source>and %n more</source>
        <translation>
            <numerusform>et %n autre</numerusform>
            <numerusform>et %n autres</numerusform>
        </translation>
    </message>
</context>
</TS>
