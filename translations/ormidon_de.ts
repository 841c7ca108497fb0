<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de">
<context>
    <name>AboutPanel</name>
    <message>
        <source>About Ormidon</source>
        <translation>Über Ormidon</translation>
    </message>
</context>
<context>
    <name>CommandLine</name>
    <message>
        <source>Try &apos;ormidon --help&apos; for more information.</source>
        <translation>Mehr dazu mit »ormidon --help«.</translation>
    </message>
    <message>
        <source>Exit codes of --convert: 0 every file was written; 1 some file could not be read or written; 2 wrong arguments, nothing converted; 3 nothing failed but some outputs already existed and were kept.</source>
        <translation>Rückgabewerte von --convert: 0 jede Datei wurde geschrieben; 1 eine Datei konnte nicht gelesen oder geschrieben werden; 2 falsche Argumente, nichts umgewandelt; 3 nichts ist fehlgeschlagen, aber einige Ausgaben gab es schon und sie wurden behalten.</translation>
    </message>
    <message>
        <source>--list-formats and --convert go alone</source>
        <translation>--list-formats und --convert stehen jeweils allein</translation>
    </message>
    <message>
        <source>unknown format code &quot;%1&quot; (see --list-formats)</source>
        <translation>unbekannter Formatcode „%1“ (siehe --list-formats)</translation>
    </message>
    <message>
        <source>&quot;%1&quot; cannot be written here (see --list-formats)</source>
        <translation>„%1“ kann hier nicht geschrieben werden (siehe --list-formats)</translation>
    </message>
    <message>
        <source>--dpi needs a number from 1 to 10000</source>
        <translation>--dpi braucht eine Zahl von 1 bis 10000</translation>
    </message>
    <message>
        <source>--angle needs a whole number from -360 to 360</source>
        <translation>--angle braucht eine ganze Zahl von -360 bis 360</translation>
    </message>
    <message>
        <source>--overwrite and --skip exclude each other</source>
        <translation>--overwrite und --skip schließen einander aus</translation>
    </message>
    <message>
        <source>cannot use %1 as the destination folder</source>
        <translation>%1 kann nicht als Zielordner verwendet werden</translation>
    </message>
    <message>
        <source>--convert needs at least one file or folder</source>
        <translation>--convert braucht mindestens eine Datei oder einen Ordner</translation>
    </message>
    <message>
        <source>Convert PATHs to the format CODE.</source>
        <translation>Die PFADE in das Format CODE umwandeln.</translation>
    </message>
    <message>
        <source>Resolution of the output (default 72).</source>
        <translation>Auflösung der Ausgabe (Vorgabe 72).</translation>
    </message>
    <message>
        <source>Turn the picture by N degrees.</source>
        <translation>Das Bild um N Grad drehen.</translation>
    </message>
    <message>
        <source>Folder the outputs go to (default: the current folder).</source>
        <translation>Ordner für die Ausgaben (Vorgabe: der aktuelle Ordner).</translation>
    </message>
    <message>
        <source>Replace existing outputs.</source>
        <translation>Vorhandene Ausgaben ersetzen.</translation>
    </message>
    <message>
        <source>Keep existing outputs (the default).</source>
        <translation>Vorhandene Ausgaben behalten (die Vorgabe).</translation>
    </message>
    <message>
        <source>List the formats read and written.</source>
        <translation>Die gelesenen und geschriebenen Formate auflisten.</translation>
    </message>
    <message>
        <source>%1: no such file or folder</source>
        <translation>%1: keine solche Datei und kein solcher Ordner</translation>
    </message>
    <message>
        <source>%1: not an image Ormidon reads</source>
        <translation>%1: kein Bild, das Ormidon lesen kann</translation>
    </message>
    <message>
        <source>%1 was not written: %2</source>
        <translation>%1 wurde nicht geschrieben: %2</translation>
    </message>
    <message>
        <source>Leave the sources&apos; EXIF, XMP and IPTC (camera, date, place) out.</source>
        <translation>EXIF, XMP und IPTC der Quellen (Kamera, Datum, Ort) weglassen.</translation>
    </message>
</context>
<context>
    <name>Controller</name>
    <message>
        <source>Choose Previous image</source>
        <translation>Vorheriges Bild wählen</translation>
    </message>
    <message>
        <source>Choose Next image</source>
        <translation>Nächstes Bild wählen</translation>
    </message>
    <message>
        <source>Convert image</source>
        <translation>Bild umwandeln</translation>
    </message>
    <message>
        <source>Convert All the images from current folder</source>
        <translation>Alle Bilder des aktuellen Ordners umwandeln</translation>
    </message>
    <message>
        <source>Rotate Image</source>
        <translation>Bild drehen</translation>
    </message>
    <message>
        <source>Set Up Rotation Angle</source>
        <translation>Drehwinkel einstellen</translation>
    </message>
    <message>
        <source>Image</source>
        <translation>Bild</translation>
    </message>
    <message>
        <source>Image List</source>
        <translation>Bilderliste</translation>
    </message>
    <message>
        <source>Source:</source>
        <translation>Quelle:</translation>
    </message>
    <message>
        <source>No image</source>
        <translation>Kein Bild</translation>
    </message>
    <message>
        <source>Open…</source>
        <translation>Öffnen …</translation>
    </message>
    <message>
        <source>◀ Previous</source>
        <translation>◀ Zurück</translation>
    </message>
    <message>
        <source>Next ▶</source>
        <translation>Weiter ▶</translation>
    </message>
    <message>
        <source>Angle:</source>
        <translation>Winkel:</translation>
    </message>
    <message>
        <source>%v of %m</source>
        <translation>%v von %m</translation>
    </message>
    <message>
        <source>Convert</source>
        <translation>Umwandeln</translation>
    </message>
    <message>
        <source>Convert All</source>
        <translation>Alle umwandeln</translation>
    </message>
    <message>
        <source>Choose…</source>
        <translation>Wählen …</translation>
    </message>
    <message>
        <source>Destination:</source>
        <translation>Ziel:</translation>
    </message>
    <message>
        <source>Resolution (dpi):</source>
        <translation>Auflösung (dpi):</translation>
    </message>
    <message>
        <source>Format:</source>
        <translation>Format:</translation>
    </message>
    <message>
        <source>Fill the image list from the whole folder</source>
        <translation>Die Bilderliste aus dem ganzen Ordner füllen</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>&amp;Open…</source>
        <translation>&amp;Öffnen …</translation>
    </message>
    <message>
        <source>Choose &amp;Destination…</source>
        <translation>&amp;Ziel wählen …</translation>
    </message>
    <message>
        <source>&amp;Convert Image</source>
        <translation>Bild &amp;umwandeln</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Beenden</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Ansicht</translation>
    </message>
    <message>
        <source>&amp;Grey Tones</source>
        <translation>&amp;Graustufen</translation>
    </message>
    <message>
        <source>&amp;Preferences Drawer</source>
        <translation>&amp;Einstellungsleiste</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>Ormidon Help</source>
        <translation>Ormidon-Hilfe</translation>
    </message>
    <message>
        <source>Ormidon &amp;Web Site</source>
        <translation>Ormidon-&amp;Webseite</translation>
    </message>
    <message>
        <source>&amp;More from the Makers of Ormidon</source>
        <translation>&amp;Mehr von den Machern von Ormidon</translation>
    </message>
    <message>
        <source>Ormidon &amp;Support</source>
        <translation>Ormidon-&amp;Unterstützung</translation>
    </message>
    <message>
        <source>&amp;About Ormidon</source>
        <translation>Ü&amp;ber Ormidon</translation>
    </message>
    <message>
        <source>Select Image File</source>
        <translation>Bilddatei wählen</translation>
    </message>
    <message>
        <source>Images (%1)</source>
        <translation>Bilder (%1)</translation>
    </message>
    <message>
        <source>Select Destination</source>
        <translation>Ziel wählen</translation>
    </message>
    <message>
        <source>Choose</source>
        <translation>Wählen</translation>
    </message>
    <message>
        <source>Ormidon: </source>
        <translation>Ormidon: </translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>%1 could not be read</source>
        <translation>%1 konnte nicht gelesen werden</translation>
    </message>
    <message>
        <source>the PDF could not be written</source>
        <translation>das PDF konnte nicht geschrieben werden</translation>
    </message>
    <message>
        <source>the EPS could not be written</source>
        <translation>das EPS konnte nicht geschrieben werden</translation>
    </message>
    <message>
        <source>the picture could not be drawn</source>
        <translation>das Bild konnte nicht gezeichnet werden</translation>
    </message>
    <message>
        <source>%1 was not written: %2</source>
        <translation>%1 wurde nicht geschrieben: %2</translation>
    </message>
    <message numerus="yes">
        <source>Convert All: %n file(s) not written. %1</source>
        <translation>
            <numerusform>Alle umwandeln: %n Datei nicht geschrieben. %1</numerusform>
            <numerusform>Alle umwandeln: %n Dateien nicht geschrieben. %1</numerusform>
        </translation>
    </message>
    <message>
        <source>Out of memory</source>
        <translation>Nicht genug Speicher</translation>
    </message>
    <message>
        <source>A picture of %1 x %2 pixels cannot be made.</source>
        <translation>Ein Bild von %1 x %2 Pixeln kann nicht erstellt werden.</translation>
    </message>
    <message>
        <source>There is not enough memory to draw the picture.</source>
        <translation>Der Speicher reicht nicht, um das Bild zu zeichnen.</translation>
    </message>
    <message>
        <source>Drawing failed</source>
        <translation>Zeichnen fehlgeschlagen</translation>
    </message>
    <message>
        <source>There is not enough memory to write the PDF.</source>
        <translation>Der Speicher reicht nicht, um das PDF zu schreiben.</translation>
    </message>
    <message>
        <source>There is not enough memory to write the picture.</source>
        <translation>Der Speicher reicht nicht, um das Bild zu schreiben.</translation>
    </message>
    <message>
        <source>Leave out metadata (camera, date, place)</source>
        <translation>Metadaten weglassen (Kamera, Datum, Ort)</translation>
    </message>
    <message>
        <source>Converted files keep no EXIF, XMP or IPTC of their source: for pictures shared with others</source>
        <translation>Umgewandelte Dateien behalten kein EXIF, XMP oder IPTC ihrer Quelle: für Bilder, die Sie mit anderen teilen</translation>
    </message>
    <message>
        <source>Zoom &amp;In</source>
        <translation>&amp;Vergrößern</translation>
    </message>
    <message>
        <source>Zoom &amp;Out</source>
        <translation>Ver&amp;kleinern</translation>
    </message>
    <message>
        <source>&amp;Actual Size</source>
        <translation>&amp;Originalgröße</translation>
    </message>
    <message>
        <source>&amp;Fit</source>
        <translation>&amp;In Fenster einpassen</translation>
    </message>
    <message>
        <source>F&amp;ull Screen</source>
        <translation>Voll&amp;bild</translation>
    </message>
    <message>
        <source>&amp;Slideshow</source>
        <translation>&amp;Diashow</translation>
    </message>
    <message>
        <source> s per picture</source>
        <translation> s je Bild</translation>
    </message>
    <message>
        <source>Slideshow:</source>
        <translation>Diashow:</translation>
    </message>
    <message>
        <source>Open Containing &amp;Folder</source>
        <translation>Enthaltenden &amp;Ordner öffnen</translation>
    </message>
    <message>
        <source>&amp;Rename…</source>
        <translation>&amp;Umbenennen …</translation>
    </message>
    <message>
        <source>Move to &amp;Trash</source>
        <translation>In den &amp;Papierkorb verschieben</translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation>&amp;Bearbeiten</translation>
    </message>
    <message>
        <source>&amp;Undo Move to Trash</source>
        <translation>&amp;Rückgängig: In den Papierkorb verschieben</translation>
    </message>
    <message>
        <source>&amp;Copy</source>
        <translation>&amp;Kopieren</translation>
    </message>
    <message>
        <source>Move to Trash</source>
        <translation>In den Papierkorb verschieben</translation>
    </message>
    <message>
        <source>Undo Move to Trash</source>
        <translation>Rückgängig: In den Papierkorb verschieben</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>the last %1 pixel columns and %2 pixel rows</source>
        <translation>die letzten %1 Pixelspalten und %2 Pixelzeilen</translation>
    </message>
    <message>
        <source>the last pixel column</source>
        <translation>die letzte Pixelspalte</translation>
    </message>
    <message>
        <source>the last %1 pixel columns</source>
        <translation>die letzten %1 Pixelspalten</translation>
    </message>
    <message>
        <source>the last pixel row</source>
        <translation>die letzte Pixelzeile</translation>
    </message>
    <message>
        <source>the last %1 pixel rows</source>
        <translation>die letzten %1 Pixelzeilen</translation>
    </message>
    <message>
        <source>The file or its folder cannot be written.</source>
        <translation>Die Datei oder ihr Ordner ist schreibgeschützt.</translation>
    </message>
    <message>
        <source>The new file could not be written (is the disk full?).</source>
        <translation>Die neue Datei konnte nicht geschrieben werden (ist der Datenträger voll?).</translation>
    </message>
    <message>
        <source>The picture is larger than Ormidon can handle.</source>
        <translation>Das Bild ist größer, als Ormidon verarbeiten kann.</translation>
    </message>
    <message>
        <source>The file cannot be read.</source>
        <translation>Die Datei kann nicht gelesen werden.</translation>
    </message>
    <message>
        <source>The file is damaged or is not a JPEG that can be turned losslessly.</source>
        <translation>Die Datei ist beschädigt oder kein JPEG, das sich verlustfrei drehen lässt.</translation>
    </message>
    <message>
        <source>&amp;Image</source>
        <translation>&amp;Bild</translation>
    </message>
    <message>
        <source>Rotate &amp;Left</source>
        <translation>Nach &amp;links drehen</translation>
    </message>
    <message>
        <source>Rotate &amp;Right</source>
        <translation>Nach &amp;rechts drehen</translation>
    </message>
    <message>
        <source>Flip &amp;Horizontal</source>
        <translation>&amp;Horizontal spiegeln</translation>
    </message>
    <message>
        <source>Flip &amp;Vertical</source>
        <translation>&amp;Vertikal spiegeln</translation>
    </message>
    <message>
        <source>Rotate the JPEG file itself? This rewrites the file losslessly.</source>
        <translation>Die JPEG-Datei selbst drehen? Die Datei wird dabei verlustfrei neu geschrieben.</translation>
    </message>
    <message>
        <source>Flip the JPEG file itself? This rewrites the file losslessly.</source>
        <translation>Die JPEG-Datei selbst spiegeln? Die Datei wird dabei verlustfrei neu geschrieben.</translation>
    </message>
    <message>
        <source>The picture keeps its full quality and its camera data; the file on disk changes.</source>
        <translation>Das Bild behält seine volle Qualität und seine Kameradaten; die Datei auf dem Datenträger wird geändert.</translation>
    </message>
    <message>
        <source>Rotate</source>
        <translation>Drehen</translation>
    </message>
    <message>
        <source>Flip</source>
        <translation>Spiegeln</translation>
    </message>
    <message>
        <source>This picture cannot be turned losslessly without losing %1.</source>
        <translation>Dieses Bild lässt sich nicht verlustfrei drehen, ohne %1 zu verlieren.</translation>
    </message>
    <message>
        <source>JPEG stores pictures in blocks of 8 or 16 pixels; the partial blocks at this picture&apos;s edge cannot move to the opposite edge. The rest stays untouched.</source>
        <translation>JPEG speichert Bilder in Blöcken von 8 oder 16 Pixeln; die angeschnittenen Blöcke am Rand dieses Bildes können nicht an den gegenüberliegenden Rand wandern. Der Rest bleibt unverändert.</translation>
    </message>
    <message>
        <source>Trim and Turn</source>
        <translation>Beschneiden und drehen</translation>
    </message>
    <message>
        <source>“%1” was not turned.</source>
        <translation>„%1“ wurde nicht gedreht.</translation>
    </message>
    <message>
        <source>The file is unchanged.</source>
        <translation>Die Datei ist unverändert.</translation>
    </message>
    <message>
        <source>Information</source>
        <translation>Informationen</translation>
    </message>
    <message>
        <source>&amp;Information</source>
        <translation>&amp;Informationen</translation>
    </message>
</context>
<context>
    <name>FileRename</name>
    <message>
        <source>A name cannot be empty.</source>
        <translation>Ein Name darf nicht leer sein.</translation>
    </message>
    <message>
        <source>A name cannot contain “/”.</source>
        <translation>Ein Name darf kein „/“ enthalten.</translation>
    </message>
    <message>
        <source>A name cannot contain a null character.</source>
        <translation>Ein Name darf kein Nullzeichen enthalten.</translation>
    </message>
    <message>
        <source>A name cannot be only dots.</source>
        <translation>Ein Name darf nicht nur aus Punkten bestehen.</translation>
    </message>
    <message>
        <source>The name is too long.</source>
        <translation>Der Name ist zu lang.</translation>
    </message>
    <message>
        <source>“%1” could not be renamed: %2.</source>
        <translation>„%1“ konnte nicht umbenannt werden: %2.</translation>
    </message>
    <message>
        <source>A file named “%1” already exists in this folder.</source>
        <translation>In diesem Ordner gibt es schon eine Datei namens „%1“.</translation>
    </message>
</context>
<context>
    <name>FileSystemCalls</name>
    <message>
        <source>you may not change that folder</source>
        <translation>Sie dürfen diesen Ordner nicht ändern</translation>
    </message>
    <message>
        <source>the disk is read-only</source>
        <translation>der Datenträger ist schreibgeschützt</translation>
    </message>
    <message>
        <source>the file no longer exists</source>
        <translation>die Datei gibt es nicht mehr</translation>
    </message>
    <message>
        <source>the disk is full</source>
        <translation>der Datenträger ist voll</translation>
    </message>
</context>
<context>
    <name>FreedesktopTrash</name>
    <message>
        <source>“%1” could not be moved to the trash: %2.</source>
        <translation>„%1“ konnte nicht in den Papierkorb verschoben werden: %2.</translation>
    </message>
    <message>
        <source>it is a folder</source>
        <translation>es ist ein Ordner</translation>
    </message>
    <message>
        <source>the trash folder “%1” cannot be made</source>
        <translation>der Papierkorb-Ordner „%1“ kann nicht angelegt werden</translation>
    </message>
    <message>
        <source>its disk has no trash, and none can be made there</source>
        <translation>ihr Datenträger hat keinen Papierkorb, und dort kann keiner angelegt werden</translation>
    </message>
    <message>
        <source>the trash holds too many files of that name</source>
        <translation>im Papierkorb liegen zu viele Dateien dieses Namens</translation>
    </message>
    <message>
        <source>“%1” could not be put back: %2.</source>
        <translation>„%1“ konnte nicht zurückgelegt werden: %2.</translation>
    </message>
    <message>
        <source>it is no longer in the trash</source>
        <translation>sie ist nicht mehr im Papierkorb</translation>
    </message>
    <message>
        <source>its folder “%1” no longer exists</source>
        <translation>ihren Ordner „%1“ gibt es nicht mehr</translation>
    </message>
    <message>
        <source>something else is now named so in “%1”</source>
        <translation>in „%1“ heißt jetzt etwas anderes so</translation>
    </message>
</context>
<context>
    <name>HelpWindow</name>
    <message>
        <source>Ormidon Help</source>
        <translation>Ormidon-Hilfe</translation>
    </message>
    <message>
        <source>◀ Back</source>
        <translation>◀ Zurück</translation>
    </message>
    <message>
        <source>Forward ▶</source>
        <translation>Vor ▶</translation>
    </message>
    <message>
        <source>Contents</source>
        <translation>Inhalt</translation>
    </message>
    <message>
        <source>Ormidon Help: %1</source>
        <translation>Ormidon-Hilfe: %1</translation>
    </message>
</context>
<context>
    <name>InformationPanel</name>
    <message>
        <source>No picture</source>
        <translation>Kein Bild</translation>
    </message>
    <message>
        <source>Open the place on a map in the web browser</source>
        <translation>Den Ort im Webbrowser auf einer Karte zeigen</translation>
    </message>
    <message>
        <source>%1:</source>
        <translation>%1:</translation>
    </message>
</context>
<context>
    <name>InformationText</name>
    <message>
        <source>%1 bytes</source>
        <translation>%1 Byte</translation>
    </message>
    <message>
        <source>%1 (%2)</source>
        <translation>%1 (%2)</translation>
    </message>
    <message>
        <source>%1 × %2 pixels</source>
        <translation>%1 × %2 Pixel</translation>
    </message>
    <message>
        <source>%1 (%2 megapixels)</source>
        <translation>%1 (%2 Megapixel)</translation>
    </message>
    <message>
        <source>%1 dpi</source>
        <translation>%1 dpi</translation>
    </message>
    <message>
        <source>%1 × %2 dpi</source>
        <translation>%1 × %2 dpi</translation>
    </message>
    <message>
        <source>1/%1 s</source>
        <translation>1/%1 s</translation>
    </message>
    <message>
        <source>%1 s</source>
        <translation>%1 s</translation>
    </message>
    <message>
        <source>%1 mm</source>
        <translation>%1 mm</translation>
    </message>
    <message>
        <source>%1 (%2 mm in 35 mm film)</source>
        <translation>%1 (%2 mm Kleinbild)</translation>
    </message>
    <message>
        <source>%1 %2, %3 %4</source>
        <translation>%1 %2, %3 %4</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>File</source>
        <translation>Datei</translation>
    </message>
    <message>
        <source>The file cannot be found.</source>
        <translation>Die Datei ist nicht zu finden.</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>Größe</translation>
    </message>
    <message>
        <source>Format</source>
        <translation>Format</translation>
    </message>
    <message>
        <source>Pixels</source>
        <translation>Pixel</translation>
    </message>
    <message>
        <source>Resolution</source>
        <translation>Auflösung</translation>
    </message>
    <message>
        <source>Colour profile</source>
        <translation>Farbprofil</translation>
    </message>
    <message>
        <source>embedded, not readable here</source>
        <translation>eingebettet, hier nicht lesbar</translation>
    </message>
    <message>
        <source>sRGB (assumed)</source>
        <translation>sRGB (angenommen)</translation>
    </message>
    <message>
        <source>Make</source>
        <translation>Hersteller</translation>
    </message>
    <message>
        <source>Model</source>
        <translation>Modell</translation>
    </message>
    <message>
        <source>Lens</source>
        <translation>Objektiv</translation>
    </message>
    <message>
        <source>Exposure</source>
        <translation>Belichtungszeit</translation>
    </message>
    <message>
        <source>Aperture</source>
        <translation>Blende</translation>
    </message>
    <message>
        <source>ISO</source>
        <translation>ISO</translation>
    </message>
    <message>
        <source>Focal length</source>
        <translation>Brennweite</translation>
    </message>
    <message>
        <source>%1 mm in 35 mm film</source>
        <translation>%1 mm Kleinbild</translation>
    </message>
    <message>
        <source>Date taken</source>
        <translation>Aufnahmedatum</translation>
    </message>
    <message>
        <source>Location</source>
        <translation>Aufnahmeort</translation>
    </message>
</context>
<context>
    <name>PropertyList</name>
    <message>
        <source>The text holds no property list.</source>
        <translation>Der Text enthält keine Eigenschaftsliste.</translation>
    </message>
    <message>
        <source>Unexpected text after the end of the dictionary.</source>
        <translation>Unerwarteter Text nach dem Ende des Wörterbuchs.</translation>
    </message>
    <message>
        <source>Line %1: %2</source>
        <translation>Zeile %1: %2</translation>
    </message>
    <message>
        <source>A comment is never closed.</source>
        <translation>Ein Kommentar wird nie geschlossen.</translation>
    </message>
    <message>
        <source>A dictionary is never closed.</source>
        <translation>Ein Wörterbuch wird nie geschlossen.</translation>
    </message>
    <message>
        <source>A dictionary key must be a string.</source>
        <translation>Ein Wörterbuchschlüssel muss eine Zeichenkette sein.</translation>
    </message>
    <message>
        <source>Missing &quot;=&quot; after a dictionary key.</source>
        <translation>Nach einem Wörterbuchschlüssel fehlt „=“.</translation>
    </message>
    <message>
        <source>Missing &quot;;&quot; after a dictionary value.</source>
        <translation>Nach einem Wörterbuchwert fehlt „;“.</translation>
    </message>
    <message>
        <source>An array is never closed.</source>
        <translation>Eine Liste wird nie geschlossen.</translation>
    </message>
    <message>
        <source>Missing &quot;,&quot; between array elements.</source>
        <translation>Zwischen Listenelementen fehlt „,“.</translation>
    </message>
    <message>
        <source>A data value is never closed.</source>
        <translation>Ein Datenwert wird nie geschlossen.</translation>
    </message>
    <message>
        <source>A data value holds an odd number of hexadecimal digits.</source>
        <translation>Ein Datenwert enthält eine ungerade Anzahl Hexadezimalziffern.</translation>
    </message>
    <message>
        <source>A data value holds a character that is no hexadecimal digit.</source>
        <translation>Ein Datenwert enthält ein Zeichen, das keine Hexadezimalziffer ist.</translation>
    </message>
    <message>
        <source>A value is missing at the end of the text.</source>
        <translation>Am Ende des Textes fehlt ein Wert.</translation>
    </message>
    <message>
        <source>The values are nested too deeply.</source>
        <translation>Die Werte sind zu tief verschachtelt.</translation>
    </message>
    <message>
        <source>A value must be a string, an array, a dictionary or data.</source>
        <translation>Ein Wert muss eine Zeichenkette, eine Liste, ein Wörterbuch oder Daten sein.</translation>
    </message>
    <message>
        <source>A quoted string is never closed.</source>
        <translation>Eine Zeichenkette in Anführungszeichen wird nie geschlossen.</translation>
    </message>
    <message>
        <source>A \U escape holds no hexadecimal digit.</source>
        <translation>Eine \U-Escape-Folge enthält keine Hexadezimalziffer.</translation>
    </message>
</context>
<context>
    <name>QApplication</name>
    <message>
        <source>Image viewer and converter</source>
        <translation>Bildbetrachter und -umwandler</translation>
    </message>
    <message>
        <source>Start without the about splash.</source>
        <translation>Ohne den Begrüßungsbildschirm starten.</translation>
    </message>
    <message>
        <source>Start a new window even when Ormidon is running.</source>
        <translation>Ein neues Fenster öffnen, auch wenn Ormidon schon läuft.</translation>
    </message>
    <message>
        <source>Image files to open; with --convert, files and folders.</source>
        <translation>Zu öffnende Bilddateien; mit --convert Dateien und Ordner.</translation>
    </message>
</context>
<context>
    <name>QObject</name>
    <message>
        <source>no encoder for this format</source>
        <translation>kein Kodierer für dieses Format</translation>
    </message>
    <message>
        <source>there is no picture to write</source>
        <translation>es gibt kein Bild zu schreiben</translation>
    </message>
    <message>
        <source>the folder cannot be written to</source>
        <translation>in den Ordner kann nicht geschrieben werden</translation>
    </message>
    <message>
        <source>the encoder refused the picture</source>
        <translation>der Kodierer hat das Bild abgelehnt</translation>
    </message>
    <message>
        <source>not every byte reached the disk (is it full or read-only?)</source>
        <translation>nicht jedes Byte hat den Datenträger erreicht (ist er voll oder schreibgeschützt?)</translation>
    </message>
    <message>
        <source>there is not enough memory</source>
        <translation>der Speicher reicht nicht</translation>
    </message>
    <message>
        <source>error %1</source>
        <translation>Fehler %1</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Anhalten</translation>
    </message>
    <message>
        <source>Convert All</source>
        <translation>Alle umwandeln</translation>
    </message>
    <message>
        <source>Ormidon</source>
        <translation>Ormidon</translation>
    </message>
    <message>
        <source>The file %1 already exists. Do you want to replace it?</source>
        <translation>Die Datei %1 existiert bereits. Möchten Sie sie ersetzen?</translation>
    </message>
    <message>
        <source>Yes</source>
        <translation>Ja</translation>
    </message>
    <message>
        <source>Skip</source>
        <translation>Überspringen</translation>
    </message>
    <message>
        <source>the picture is larger than this format can hold</source>
        <translation>das Bild ist größer, als dieses Format aufnehmen kann</translation>
    </message>
</context>
<context>
    <name>RenameDialog</name>
    <message>
        <source>Rename</source>
        <translation>Umbenennen</translation>
    </message>
    <message>
        <source>New name for “%1”:</source>
        <translation>Neuer Name für „%1“:</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
</context>
<context>
    <name>wmfImageView</name>
    <message>
        <source>Fit (%1 %)</source>
        <translation>Eingepasst (%1 %)</translation>
    </message>
    <message>
        <source>%1 %</source>
        <translation>%1 %</translation>
    </message>
</context>
</TS>
