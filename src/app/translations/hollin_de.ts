<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE" sourcelanguage="en">
<context>
    <name>AboutBox</name>
    <message>
        <source>About Hollin</source>
        <translation>Über Hollin</translation>
    </message>
    <message>
        <source>Writes new firmware into the TS30 keyboard.</source>
        <translation>Schreibt neue Firmware in das Keyboard TS30.</translation>
    </message>
    <message>
        <source>Licences</source>
        <translation>Lizenzen</translation>
    </message>
</context>
<context>
    <name>AppDelegate</name>
    <message>
        <source>Expected a folder to store application data, found a file (%1).</source>
        <translation>Erwartet wurde ein Ordner für die Daten des Programms, gefunden eine Datei (%1).</translation>
    </message>
    <message>
        <source>Failed to initialize the store</source>
        <translation>Der Speicher konnte nicht angelegt werden</translation>
    </message>
    <message>
        <source>There was an error building up the data file.</source>
        <translation>Beim Anlegen der Datendatei ist ein Fehler aufgetreten.</translation>
    </message>
    <message>
        <source>Could not save changes while quitting. Quit anyway?</source>
        <translation>Die Änderungen konnten beim Beenden nicht gesichert werden. Trotzdem beenden?</translation>
    </message>
    <message>
        <source>Quitting now will lose any changes you have made since the last successful save</source>
        <translation>Wenn Sie jetzt beenden, gehen alle Änderungen seit dem letzten erfolgreichen Sichern verloren</translation>
    </message>
    <message>
        <source>Quit anyway</source>
        <translation>Trotzdem beenden</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
</context>
<context>
    <name>DataStore</name>
    <message>
        <source>The folder for application data cannot be examined (%1).</source>
        <translation>Der Ordner für die Daten des Programms kann nicht untersucht werden (%1).</translation>
    </message>
    <message>
        <source>The folder for application data cannot be made (%1).</source>
        <translation>Der Ordner für die Daten des Programms kann nicht angelegt werden (%1).</translation>
    </message>
    <message>
        <source>The application data cannot be read (%1).</source>
        <translation>Die Daten des Programms können nicht gelesen werden (%1).</translation>
    </message>
    <message>
        <source>The file cannot be opened.</source>
        <translation>Die Datei kann nicht geöffnet werden.</translation>
    </message>
    <message>
        <source>The file is damaged.</source>
        <translation>Die Datei ist beschädigt.</translation>
    </message>
    <message>
        <source>The application data cannot be saved (%1).</source>
        <translation>Die Daten des Programms können nicht gesichert werden (%1).</translation>
    </message>
</context>
<context>
    <name>NotConnected</name>
    <message>
        <source>The TS30 is not connected.</source>
        <translation>Das TS30 ist nicht verbunden.</translation>
    </message>
    <message>
        <source>The TS30 is not connected. Please hold down the &quot;%1&quot; <byte value="xd"/>
 buttons while powering on the TS30.</source>
        <translation>Das TS30 ist nicht verbunden. Bitte halten Sie die Taste „%1“ gedrückt, während Sie das TS30 einschalten.</translation>
    </message>
    <message>
        <source>The TS30 is not connected. Please hold down the &quot;%1&quot; and &quot;%2&quot; <byte value="xd"/>
 buttons while powering on the TS30.</source>
        <translation>Das TS30 ist nicht verbunden. Bitte halten Sie die Tasten „%1“ und „%2“ gedrückt, während Sie das TS30 einschalten.</translation>
    </message>
    <message>
        <source>The TS30 is not connected. Please hold down the &quot;%1&quot; + &quot;%2&quot; + &quot;%3&quot; <byte value="xd"/>
 buttons while powering on the TS30.</source>
        <translation>Das TS30 ist nicht verbunden. Bitte halten Sie die Tasten „%1“ + „%2“ + „%3“ gedrückt, während Sie das TS30 einschalten.</translation>
    </message>
</context>
<context>
    <name>OpenPanel</name>
    <message>
        <source>Open the update file</source>
        <translation>Öffnen Sie die Update-Datei</translation>
    </message>
    <message>
        <source>Open File</source>
        <translation>Datei öffnen</translation>
    </message>
    <message>
        <source>An update package has a name that ends in .dat.</source>
        <translation>Der Name eines Update-Pakets endet auf .dat.</translation>
    </message>
    <message>
        <source>Update packages (*.dat)</source>
        <translation>Update-Pakete (*.dat)</translation>
    </message>
    <message>
        <source>Folder</source>
        <translation>Ordner</translation>
    </message>
    <message>
        <source>Update package</source>
        <translation>Update-Paket</translation>
    </message>
</context>
<context>
    <name>ProgressWords</name>
    <message>
        <source>Step %1 of %2</source>
        <translation>Schritt %1 von %2</translation>
    </message>
    <message>
        <source>a few seconds left</source>
        <translation>noch wenige Sekunden</translation>
    </message>
    <message>
        <source>about %1 left</source>
        <translation>noch etwa %1</translation>
    </message>
    <message>
        <source>%1 elapsed</source>
        <translation>%1 vergangen</translation>
    </message>
    <message>
        <source>Completed in %1</source>
        <translation>In %1 abgeschlossen</translation>
    </message>
    <message>
        <source>Stopped in step %1 of %2 after %3</source>
        <translation>In Schritt %1 von %2 nach %3 abgebrochen</translation>
    </message>
</context>
<context>
    <name>SingleInstance</name>
    <message>
        <source>Another Hollin is at work</source>
        <translation>Ein anderes Hollin ist bei der Arbeit</translation>
    </message>
    <message>
        <source>Hollin starts as soon as it has ended.</source>
        <translation>Hollin startet, sobald es beendet ist.</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>Beenden</translation>
    </message>
</context>
<context>
    <name>hollin::MainWindow</name>
    <message>
        <source>Error</source>
        <translation>Fehler</translation>
    </message>
    <message>
        <source>Unable to open dat file: %1</source>
        <translation>Die dat-Datei kann nicht geöffnet werden: %1</translation>
    </message>
    <message>
        <source>Checksum or file format error: %1</source>
        <translation>Prüfsumme oder Dateiformat fehlerhaft: %1</translation>
    </message>
    <message>
        <source>More than one device! Remove some devices</source>
        <translation>Mehr als ein Gerät! Bitte entfernen Sie die überzähligen.</translation>
    </message>
    <message>
        <source>The TS30 is connected. Please press the &quot;Update&quot; button now.</source>
        <translation>Das TS30 ist verbunden. Bitte drücken Sie jetzt auf „Aktualisieren“.</translation>
    </message>
    <message>
        <source>Information</source>
        <translation>Information</translation>
    </message>
    <message>
        <source>Update completed, please use the TS30 power switch to restart the keyboard.</source>
        <translation>Die Aktualisierung ist abgeschlossen. Bitte starten Sie das Keyboard mit dem Netzschalter des TS30 neu.</translation>
    </message>
    <message>
        <source>Update Error!</source>
        <translation>Fehler bei der Aktualisierung!</translation>
    </message>
    <message>
        <source>Update your TS30</source>
        <translation>Ihr TS30 aktualisieren</translation>
    </message>
    <message>
        <source>Three steps. Leave the keyboard connected and switched on until the last one is done.</source>
        <translation>Drei Schritte. Lassen Sie das Keyboard verbunden und eingeschaltet, bis der letzte erledigt ist.</translation>
    </message>
    <message>
        <source>Drawing of a keyboard</source>
        <translation>Zeichnung eines Keyboards</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>Öffnen</translation>
    </message>
    <message>
        <source>Path of the update package</source>
        <translation>Pfad des Update-Pakets</translation>
    </message>
    <message>
        <source>Press Open, or drop an update package here.</source>
        <translation>Drücken Sie „Öffnen“ oder ziehen Sie ein Update-Paket hierher.</translation>
    </message>
    <message>
        <source>Product model</source>
        <translation>Modell</translation>
    </message>
    <message>
        <source>Firmware version</source>
        <translation>Firmware-Version</translation>
    </message>
    <message>
        <source>Choose the update package</source>
        <translation>Update-Paket wählen</translation>
    </message>
    <message>
        <source>Refresh</source>
        <translation>Neu suchen</translation>
    </message>
    <message>
        <source>Comes after the package, which says how to switch the keyboard on.</source>
        <translation>Folgt auf das Paket; es sagt, wie das Keyboard einzuschalten ist.</translation>
    </message>
    <message>
        <source>Connect the keyboard</source>
        <translation>Keyboard verbinden</translation>
    </message>
    <message>
        <source>No right to open the keyboard. Install Hollin&apos;s udev rule, then plug the keyboard in again.</source>
        <translation>Keine Berechtigung, das Keyboard zu öffnen. Installieren Sie die udev-Regel von Hollin und schließen Sie das Keyboard neu an.</translation>
    </message>
    <message>
        <source>Update</source>
        <translation>Aktualisieren</translation>
    </message>
    <message>
        <source>Progress of the update</source>
        <translation>Fortschritt der Aktualisierung</translation>
    </message>
    <message>
        <source>Update the keyboard</source>
        <translation>Keyboard aktualisieren</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Sichern</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>Beenden</translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation>&amp;Bearbeiten</translation>
    </message>
    <message>
        <source>Undo</source>
        <translation>Rückgängig</translation>
    </message>
    <message>
        <source>Redo</source>
        <translation>Wiederholen</translation>
    </message>
    <message>
        <source>&amp;Keyboard</source>
        <translation>&amp;Keyboard</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>About</source>
        <translation>Über Hollin</translation>
    </message>
    <message>
        <source>A keyboard is being updated</source>
        <translation>Ein Keyboard wird aktualisiert</translation>
    </message>
</context>
<context>
    <name>hollin::StepSign</name>
    <message>
        <source>waiting</source>
        <translation>wartet</translation>
    </message>
    <message>
        <source>next</source>
        <translation>als Nächstes</translation>
    </message>
    <message>
        <source>in progress</source>
        <translation>läuft</translation>
    </message>
    <message>
        <source>done</source>
        <translation>erledigt</translation>
    </message>
    <message>
        <source>needs attention</source>
        <translation>braucht Aufmerksamkeit</translation>
    </message>
    <message>
        <source>failed</source>
        <translation>fehlgeschlagen</translation>
    </message>
    <message>
        <source>Step %1 of %2: %3</source>
        <translation>Schritt %1 von %2: %3</translation>
    </message>
</context>
</TS>
