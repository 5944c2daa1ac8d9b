<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE" sourcelanguage="en">
<context>
    <name>CRealityCheckBar</name>
    <message>
        <source>REF</source>
        <translation>REF</translation>
    </message>
    <message>
        <source>Show the reference spectrum</source>
        <translation>Das Spektrum der Referenz zeigen</translation>
    </message>
    <message>
        <source>DUT</source>
        <translation>DUT</translation>
    </message>
    <message>
        <source>Show the spectrum of the device under test</source>
        <translation>Das Spektrum des Prüflings zeigen</translation>
    </message>
    <message>
        <source>DUT/REF</source>
        <translation>DUT/REF</translation>
    </message>
    <message>
        <source>Show the device under test relative to the reference</source>
        <translation>Den Prüfling im Verhältnis zur Referenz zeigen</translation>
    </message>
</context>
<context>
    <name>PlotKeys</name>
    <message>
        <source>Pause the plot, and go on with what came meanwhile</source>
        <translation>Diagramm anhalten und mit dem weitermachen, was inzwischen kam</translation>
    </message>
    <message>
        <source>Reset zoom and limits</source>
        <translation>Zoom und Grenzen zurücksetzen</translation>
    </message>
    <message>
        <source>Zoom in and out</source>
        <translation>Vergrößern und verkleinern</translation>
    </message>
    <message>
        <source>Move the visible part</source>
        <translation>Ausschnitt verschieben</translation>
    </message>
    <message>
        <source>Automatic limits</source>
        <translation>Automatische Grenzen</translation>
    </message>
    <message>
        <source>Logarithmic axis on and off</source>
        <translation>Logarithmische Achse an und aus</translation>
    </message>
    <message>
        <source>Cursor, then difference from here, then off</source>
        <translation>Cursor, dann Differenz von hier, dann aus</translation>
    </message>
    <message>
        <source>Copy the picture</source>
        <translation>Bild kopieren</translation>
    </message>
    <message>
        <source>Copy the visible data</source>
        <translation>Sichtbare Daten kopieren</translation>
    </message>
    <message>
        <source>Save the picture or the visible data</source>
        <translation>Bild oder sichtbare Daten speichern</translation>
    </message>
    <message>
        <source>Menu of the plot</source>
        <translation>Menü des Diagramms</translation>
    </message>
</context>
<context>
    <name>Sign</name>
    <message>
        <source>ok</source>
        <translation>gut</translation>
    </message>
    <message>
        <source>waiting</source>
        <translation>wartet</translation>
    </message>
    <message>
        <source>stale</source>
        <translation>veraltet</translation>
    </message>
    <message>
        <source>warning</source>
        <translation>Warnung</translation>
    </message>
    <message>
        <source>alarm</source>
        <translation>Alarm</translation>
    </message>
    <message>
        <source>error</source>
        <translation>Fehler</translation>
    </message>
    <message>
        <source>off</source>
        <translation>aus</translation>
    </message>
</context>
<context>
    <name>ToolRow</name>
    <message>
        <source>Connect</source>
        <translation>Verbinden</translation>
    </message>
    <message>
        <source>Start</source>
        <translation>Starten</translation>
    </message>
    <message>
        <source>Log</source>
        <translation>Log</translation>
    </message>
    <message>
        <source>Tare</source>
        <translation>Tarieren</translation>
    </message>
    <message>
        <source>Station</source>
        <translation>Station</translation>
    </message>
    <message>
        <source>Stop log</source>
        <translation>Beenden</translation>
    </message>
</context>
<context>
    <name>qor</name>
    <message>
        <source>&amp;New ...</source>
        <translation>&amp;Neu ...</translation>
    </message>
    <message>
        <source>Begin a session: a port, its instruments, a log.</source>
        <translation>Eine Sitzung beginnen: Port, Instrumente, Log.</translation>
    </message>
    <message>
        <source>&amp;Open ...</source>
        <translation>&amp;Öffnen ...</translation>
    </message>
    <message>
        <source>Open a kept session.</source>
        <translation>Eine aufgehobene Sitzung öffnen.</translation>
    </message>
    <message>
        <source>&amp;Save</source>
        <translation>&amp;Speichern</translation>
    </message>
    <message>
        <source>Keep the session in its file.</source>
        <translation>Die Sitzung in ihrer Datei aufheben.</translation>
    </message>
    <message>
        <source>Save &amp;as ...</source>
        <translation>Speichern &amp;unter ...</translation>
    </message>
    <message>
        <source>Keep the session in another file.</source>
        <translation>Die Sitzung in einer anderen Datei aufheben.</translation>
    </message>
    <message>
        <source>&amp;Replay a raw log ...</source>
        <translation>&amp;Rohlog abspielen ...</translation>
    </message>
    <message>
        <source>Play a raw log as if its instruments were here.</source>
        <translation>Ein Rohlog abspielen, als wären seine Instrumente da.</translation>
    </message>
    <message>
        <source>&amp;Practice</source>
        <translation>Übun&amp;g</translation>
    </message>
    <message>
        <source>Simulated instruments, no hardware needed.</source>
        <translation>Simulierte Instrumente, ganz ohne Geräte.</translation>
    </message>
    <message>
        <source>&amp;Close session</source>
        <translation>Sitzung s&amp;chließen</translation>
    </message>
    <message>
        <source>End this session and go to the start page.</source>
        <translation>Diese Sitzung beenden und zur Startseite gehen.</translation>
    </message>
    <message>
        <source>Se&amp;ttings ...</source>
        <translation>&amp;Einstellungen ...</translation>
    </message>
    <message>
        <source>Settings of the program.</source>
        <translation>Einstellungen des Programms.</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Beenden</translation>
    </message>
    <message>
        <source>End the program.</source>
        <translation>Das Programm beenden.</translation>
    </message>
    <message>
        <source>Add &amp;port ...</source>
        <translation>&amp;Port hinzufügen ...</translation>
    </message>
    <message>
        <source>Add a serial port with its instruments.</source>
        <translation>Einen seriellen Port mit seinen Instrumenten hinzufügen.</translation>
    </message>
    <message>
        <source>Add &amp;instrument ...</source>
        <translation>&amp;Instrument hinzufügen ...</translation>
    </message>
    <message>
        <source>Add an instrument from its definition file.</source>
        <translation>Ein Instrument aus seiner Definitionsdatei hinzufügen.</translation>
    </message>
    <message>
        <source>Add pac&amp;kage ...</source>
        <translation>Pa&amp;ket hinzufügen ...</translation>
    </message>
    <message>
        <source>Add the instruments of a package file.</source>
        <translation>Die Instrumente einer Paketdatei hinzufügen.</translation>
    </message>
    <message>
        <source>&amp;Find instruments ...</source>
        <translation>Instrumente &amp;suchen ...</translation>
    </message>
    <message>
        <source>Listen on the free ports and tell what is there.</source>
        <translation>An den freien Ports horchen und sagen, was da ist.</translation>
    </message>
    <message>
        <source>&amp;Connect all</source>
        <translation>Alle &amp;verbinden</translation>
    </message>
    <message>
        <source>Connect every port.</source>
        <translation>Jeden Port verbinden.</translation>
    </message>
    <message>
        <source>&amp;Start</source>
        <translation>S&amp;tarten</translation>
    </message>
    <message>
        <source>Start telemetry on every connected port.</source>
        <translation>Telemetrie an jedem verbundenen Port starten.</translation>
    </message>
    <message>
        <source>&amp;Roles ...</source>
        <translation>&amp;Rollen ...</translation>
    </message>
    <message>
        <source>Which instrument is profiler, reference, GPS and so on.</source>
        <translation>Welches Instrument Profiler, Referenz, GPS und so weiter ist.</translation>
    </message>
    <message>
        <source>Prop&amp;erties ...</source>
        <translation>&amp;Eigenschaften ...</translation>
    </message>
    <message>
        <source>Properties of what is chosen in the session tree.</source>
        <translation>Eigenschaften dessen, was im Sitzungsbaum gewählt ist.</translation>
    </message>
    <message>
        <source>Start &amp;log</source>
        <translation>Log &amp;beginnen</translation>
    </message>
    <message>
        <source>Begin to log.</source>
        <translation>Mit dem Aufzeichnen beginnen.</translation>
    </message>
    <message>
        <source>S&amp;top log</source>
        <translation>Log been&amp;den</translation>
    </message>
    <message>
        <source>End the log.</source>
        <translation>Das Log beenden.</translation>
    </message>
    <message>
        <source>&amp;Options ...</source>
        <translation>&amp;Optionen ...</translation>
    </message>
    <message>
        <source>How raw logs are written and when they end.</source>
        <translation>Wie Rohlogs geschrieben werden und wann sie enden.</translation>
    </message>
    <message>
        <source>&amp;Naming ...</source>
        <translation>&amp;Namen ...</translation>
    </message>
    <message>
        <source>How log files are named and where they go.</source>
        <translation>Wie Logdateien heißen und wohin sie kommen.</translation>
    </message>
    <message>
        <source>&amp;Station ...</source>
        <translation>&amp;Station ...</translation>
    </message>
    <message>
        <source>Cruise, station, cast and position of the next log.</source>
        <translation>Reise, Station, Profil und Position des nächsten Logs.</translation>
    </message>
    <message>
        <source>Open &amp;folder</source>
        <translation>O&amp;rdner öffnen</translation>
    </message>
    <message>
        <source>Show the folder of the logs.</source>
        <translation>Den Ordner der Logs zeigen.</translation>
    </message>
    <message>
        <source>Stat&amp;us</source>
        <translation>Stat&amp;us</translation>
    </message>
    <message>
        <source>File, frames, disk: all about the open log.</source>
        <translation>Datei, Frames, Platte: alles über das offene Log.</translation>
    </message>
    <message>
        <source>&amp;Tare</source>
        <translation>&amp;Tarieren</translation>
    </message>
    <message>
        <source>Take the present pressure as that of the surface.</source>
        <translation>Den jetzigen Druck als den der Oberfläche nehmen.</translation>
    </message>
    <message>
        <source>&amp;Clear tare</source>
        <translation>Tara &amp;löschen</translation>
    </message>
    <message>
        <source>Measure depth without a tare.</source>
        <translation>Die Tiefe ohne Tara messen.</translation>
    </message>
    <message>
        <source>Cast &amp;begins now</source>
        <translation>Profil &amp;beginnt jetzt</translation>
    </message>
    <message>
        <source>The profile begins anew at this moment.</source>
        <translation>Das Profil beginnt in diesem Moment neu.</translation>
    </message>
    <message>
        <source>&amp;Next cast</source>
        <translation>&amp;Nächstes Profil</translation>
    </message>
    <message>
        <source>Move the name of the next log on to the next cast.</source>
        <translation>Den Namen des nächsten Logs zum nächsten Profil weiterstellen.</translation>
    </message>
    <message>
        <source>Co&amp;mment ...</source>
        <translation>&amp;Kommentar ...</translation>
    </message>
    <message>
        <source>Write a comment, stamped with the moment of this key.</source>
        <translation>Einen Kommentar schreiben, gestempelt mit dem Moment dieser Taste.</translation>
    </message>
    <message>
        <source>&amp;Light</source>
        <translation>&amp;Hell</translation>
    </message>
    <message>
        <source>Light palette.</source>
        <translation>Helle Farben.</translation>
    </message>
    <message>
        <source>&amp;Dark</source>
        <translation>&amp;Dunkel</translation>
    </message>
    <message>
        <source>Dark palette.</source>
        <translation>Dunkle Farben.</translation>
    </message>
    <message>
        <source>&amp;Night</source>
        <translation>&amp;Nacht</translation>
    </message>
    <message>
        <source>Red on black, and back: the eye stays used to the dark.</source>
        <translation>Rot auf Schwarz und zurück: das Auge bleibt an das Dunkel gewöhnt.</translation>
    </message>
    <message>
        <source>&amp;Larger</source>
        <translation>&amp;Größer</translation>
    </message>
    <message>
        <source>Larger text.</source>
        <translation>Größere Schrift.</translation>
    </message>
    <message>
        <source>&amp;Smaller</source>
        <translation>&amp;Kleiner</translation>
    </message>
    <message>
        <source>Smaller text.</source>
        <translation>Kleinere Schrift.</translation>
    </message>
    <message>
        <source>&amp;Normal</source>
        <translation>&amp;Normal</translation>
    </message>
    <message>
        <source>Text at its normal size.</source>
        <translation>Schrift in normaler Größe.</translation>
    </message>
    <message>
        <source>Large tar&amp;gets</source>
        <translation>Große &amp;Ziele</translation>
    </message>
    <message>
        <source>Larger buttons, for gloves and a rolling deck.</source>
        <translation>Größere Tasten, für Handschuhe und ein rollendes Deck.</translation>
    </message>
    <message>
        <source>&amp;Watch mode</source>
        <translation>&amp;Wachmodus</translation>
    </message>
    <message>
        <source>The state of logging and the windows on the whole screen.</source>
        <translation>Der Stand des Logs und die Fenster auf dem ganzen Schirm.</translation>
    </message>
    <message>
        <source>&amp;Ancillary Data Alarms</source>
        <translation>&amp;Ancillary Data Alarms</translation>
    </message>
    <message>
        <source>Sound when a watched value is in its alarm range.</source>
        <translation>Ton, wenn ein überwachter Wert in seinem Alarmbereich ist.</translation>
    </message>
    <message>
        <source>&amp;Silence for 2 min</source>
        <translation>Für 2 min &amp;stumm</translation>
    </message>
    <message>
        <source>No alarm sound for two minutes; it comes back by itself.</source>
        <translation>Zwei Minuten kein Alarmton; er kommt von selbst zurück.</translation>
    </message>
    <message>
        <source>Ne&amp;xt area</source>
        <translation>Nä&amp;chster Bereich</translation>
    </message>
    <message>
        <source>Move on to tool row, messages, tree or windows.</source>
        <translation>Weiter zu Werkzeugen, Meldungen, Baum oder Fenstern.</translation>
    </message>
    <message>
        <source>&amp;Session tree</source>
        <translation>&amp;Sitzungsbaum</translation>
    </message>
    <message>
        <source>Ports and instruments with their state.</source>
        <translation>Ports und Instrumente mit ihrem Zustand.</translation>
    </message>
    <message>
        <source>Session &amp;log</source>
        <translation>Sitzungs&amp;log</translation>
    </message>
    <message>
        <source>What happened, line by line.</source>
        <translation>Was geschah, Zeile um Zeile.</translation>
    </message>
    <message>
        <source>&amp;Comments</source>
        <translation>&amp;Kommentare</translation>
    </message>
    <message>
        <source>The comments of this session.</source>
        <translation>Die Kommentare dieser Sitzung.</translation>
    </message>
    <message>
        <source>Telemetry &amp;monitor</source>
        <translation>Telemetrie&amp;monitor</translation>
    </message>
    <message>
        <source>Frames as they come, byte by byte.</source>
        <translation>Frames, wie sie kommen, Byte um Byte.</translation>
    </message>
    <message>
        <source>&amp;Spectrum</source>
        <translation>&amp;Spektrum</translation>
    </message>
    <message>
        <source>Spectra of an instrument.</source>
        <translation>Spektren eines Instruments.</translation>
    </message>
    <message>
        <source>&amp;Depth profile</source>
        <translation>&amp;Tiefenprofil</translation>
    </message>
    <message>
        <source>Sensors against depth.</source>
        <translation>Sensoren über der Tiefe.</translation>
    </message>
    <message>
        <source>&amp;Time series</source>
        <translation>&amp;Zeitreihe</translation>
    </message>
    <message>
        <source>Sensors against time.</source>
        <translation>Sensoren über der Zeit.</translation>
    </message>
    <message>
        <source>&amp;GPS station</source>
        <translation>&amp;GPS-Station</translation>
    </message>
    <message>
        <source>Position, fix and track.</source>
        <translation>Position, Fix und Kurs.</translation>
    </message>
    <message>
        <source>&amp;Weather station</source>
        <translation>&amp;Wetterstation</translation>
    </message>
    <message>
        <source>Wind, air and pressure.</source>
        <translation>Wind, Luft und Druck.</translation>
    </message>
    <message>
        <source>&amp;Ancillary</source>
        <translation>Z&amp;usatzwerte</translation>
    </message>
    <message>
        <source>Sensors and derived values as figures.</source>
        <translation>Sensoren und abgeleitete Werte als Zahlen.</translation>
    </message>
    <message>
        <source>Optical &amp;reality check</source>
        <translation>Optischer &amp;Realitätscheck</translation>
    </message>
    <message>
        <source>An instrument against the reference.</source>
        <translation>Ein Instrument gegen die Referenz.</translation>
    </message>
    <message>
        <source>Instrument stat&amp;us</source>
        <translation>&amp;Instrumentstatus</translation>
    </message>
    <message>
        <source>Rates, losses and errors, the worst first.</source>
        <translation>Raten, Verluste und Fehler, das Schlimmste zuerst.</translation>
    </message>
    <message>
        <source>Ne&amp;xt window</source>
        <translation>Nä&amp;chstes Fenster</translation>
    </message>
    <message>
        <source>Go to the next window.</source>
        <translation>Zum nächsten Fenster gehen.</translation>
    </message>
    <message>
        <source>&amp;Close window</source>
        <translation>Fenster schl&amp;ießen</translation>
    </message>
    <message>
        <source>Close the window with the focus.</source>
        <translation>Das Fenster mit dem Fokus schließen.</translation>
    </message>
    <message>
        <source>To &amp;other screen</source>
        <translation>Auf &amp;anderen Schirm</translation>
    </message>
    <message>
        <source>Move the window to the next screen.</source>
        <translation>Das Fenster auf den nächsten Schirm bringen.</translation>
    </message>
    <message>
        <source>&amp;Tile</source>
        <translation>&amp;Kacheln</translation>
    </message>
    <message>
        <source>Give all windows the same room.</source>
        <translation>Allen Fenstern gleich viel Platz geben.</translation>
    </message>
    <message>
        <source>&amp;Keep this layout</source>
        <translation>Anordnung &amp;behalten</translation>
    </message>
    <message>
        <source>Keep the places of the windows for this set of screens.</source>
        <translation>Die Plätze der Fenster für diese Bildschirme behalten.</translation>
    </message>
    <message>
        <source>&amp;Default layout</source>
        <translation>&amp;Grundanordnung</translation>
    </message>
    <message>
        <source>Put the windows where they were at first.</source>
        <translation>Die Fenster dahin stellen, wo sie zuerst waren.</translation>
    </message>
    <message>
        <source>&amp;Play or pause</source>
        <translation>Abspielen &amp;oder anhalten</translation>
    </message>
    <message>
        <source>Play the replay on, or hold it.</source>
        <translation>Die Wiedergabe weiterspielen oder anhalten.</translation>
    </message>
    <message>
        <source>&amp;Back 10 s</source>
        <translation>10 s &amp;zurück</translation>
    </message>
    <message>
        <source>Go back ten seconds in the replay.</source>
        <translation>In der Wiedergabe zehn Sekunden zurückgehen.</translation>
    </message>
    <message>
        <source>&amp;Forward 10 s</source>
        <translation>10 s &amp;vor</translation>
    </message>
    <message>
        <source>Go on ten seconds in the replay.</source>
        <translation>In der Wiedergabe zehn Sekunden weitergehen.</translation>
    </message>
    <message>
        <source>&amp;Guide</source>
        <translation>&amp;Anleitung</translation>
    </message>
    <message>
        <source>The user&apos;s guide.</source>
        <translation>Die Anleitung für den Betrieb.</translation>
    </message>
    <message>
        <source>&amp;Keys</source>
        <translation>&amp;Tasten</translation>
    </message>
    <message>
        <source>All keys of the program.</source>
        <translation>Alle Tasten des Programms.</translation>
    </message>
    <message>
        <source>&amp;About</source>
        <translation>Ü&amp;ber</translation>
    </message>
    <message>
        <source>Version, licence and what the program stands on.</source>
        <translation>Version, Lizenz und worauf das Programm steht.</translation>
    </message>
    <message>
        <source>&amp;Session</source>
        <translation>&amp;Sitzung</translation>
    </message>
    <message>
        <source>&amp;Instruments</source>
        <translation>&amp;Instrumente</translation>
    </message>
    <message>
        <source>&amp;Log</source>
        <translation>&amp;Log</translation>
    </message>
    <message>
        <source>&amp;Cast</source>
        <translation>&amp;Profil</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Ansicht</translation>
    </message>
    <message>
        <source>&amp;Palette</source>
        <translation>&amp;Farben</translation>
    </message>
    <message>
        <source>Text si&amp;ze</source>
        <translation>Schrift&amp;größe</translation>
    </message>
    <message>
        <source>&amp;Docks</source>
        <translation>&amp;Leisten</translation>
    </message>
    <message>
        <source>&amp;Window</source>
        <translation>&amp;Fenster</translation>
    </message>
    <message>
        <source>&amp;New</source>
        <translation>&amp;Neu</translation>
    </message>
    <message>
        <source>&amp;Layouts</source>
        <translation>An&amp;ordnungen</translation>
    </message>
    <message>
        <source>Re&amp;play bar</source>
        <translation>Abspiel&amp;leiste</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>No session is open.</source>
        <translation>Keine Sitzung ist offen.</translation>
    </message>
    <message>
        <source>R&amp;ecent</source>
        <translation>&amp;Zuletzt</translation>
    </message>
    <message>
        <source>Keys</source>
        <translation>Tasten</translation>
    </message>
    <message>
        <source>What</source>
        <translation>Was</translation>
    </message>
    <message>
        <source>What for</source>
        <translation>Wozu</translation>
    </message>
    <message>
        <source>In a plot</source>
        <translation>In einem Diagramm</translation>
    </message>
    <message>
        <source>&amp;Damaged frames</source>
        <translation>&amp;Beschädigte Frames</translation>
    </message>
    <message>
        <source>Practice: frames are lost and damaged on the way.</source>
        <translation>Übung: Frames gehen unterwegs verloren oder werden beschädigt.</translation>
    </message>
    <message>
        <source>&amp;Lost port</source>
        <translation>&amp;Verlorener Anschluss</translation>
    </message>
    <message>
        <source>Practice: the first port is unplugged until this is switched off.</source>
        <translation>Übung: Der erste Anschluss ist abgezogen, bis dies ausgeschaltet wird.</translation>
    </message>
    <message>
        <source>&amp;Slow disk</source>
        <translation>&amp;Langsame Platte</translation>
    </message>
    <message>
        <source>Practice: the disk takes its time with every write.</source>
        <translation>Übung: Die Platte lässt sich bei jedem Schreiben Zeit.</translation>
    </message>
    <message>
        <source>Practice &amp;faults</source>
        <translation>&amp;Störungen der Übung</translation>
    </message>
</context>
<context>
    <name>qor::CBanner</name>
    <message>
        <source>State of logging. Click for the log&apos;s status.</source>
        <translation>Stand des Logs. Klick: Status des Logs.</translation>
    </message>
    <message>
        <source>NOT LOGGING</source>
        <translation>KEIN LOG</translation>
    </message>
    <message>
        <source>LOGGING</source>
        <translation>LOG LÄUFT</translation>
    </message>
    <message>
        <source>WAITING</source>
        <translation>LOG WARTET</translation>
    </message>
    <message>
        <source>LOG FAILED</source>
        <translation>LOG GESTÖRT</translation>
    </message>
    <message>
        <source>PRACTICE</source>
        <translation>ÜBUNG</translation>
    </message>
    <message>
        <source>REPLAY %1</source>
        <comment>with its speed</comment>
        <translation>WIEDERGABE %1</translation>
    </message>
    <message>
        <source>Frames come and are not kept. Next log %1</source>
        <translation>Frames kommen und werden nicht aufgehoben. Nächstes Log %1</translation>
    </message>
    <message>
        <source>Next log %1</source>
        <translation>Nächstes Log %1</translation>
    </message>
    <message>
        <source>%1   %2 frames</source>
        <translation>%1   %2 Frames</translation>
    </message>
</context>
<context>
    <name>qor::CDesk</name>
    <message>
        <source>Finding is not part of this version.</source>
        <translation>Suchen gehört nicht zu dieser Version.</translation>
    </message>
    <message>
        <source>The guide could not be shown: %1</source>
        <translation>Die Anleitung konnte nicht gezeigt werden: %1</translation>
    </message>
    <message>
        <source>Add an instrument</source>
        <translation>Ein Instrument hinzufügen</translation>
    </message>
    <message>
        <source>Definitions (*.cal *.tdf)</source>
        <translation>Definitionen (*.cal *.tdf)</translation>
    </message>
    <message>
        <source>Add a package</source>
        <translation>Ein Paket hinzufügen</translation>
    </message>
    <message>
        <source>Packages (*.sip)</source>
        <translation>Pakete (*.sip)</translation>
    </message>
</context>
<context>
    <name>qor::CDisplayArea</name>
    <message>
        <source>No window is open.</source>
        <translation>Kein Fenster ist offen.</translation>
    </message>
    <message>
        <source>New window</source>
        <translation>Neues Fenster</translation>
    </message>
</context>
<context>
    <name>qor::CDisplayWindow</name>
    <message>
        <source>Put back into the frame</source>
        <translation>Zurück in den Rahmen</translation>
    </message>
    <message>
        <source>Take out of the frame</source>
        <translation>Aus dem Rahmen nehmen</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
</context>
<context>
    <name>qor::CFilePicker</name>
    <message>
        <source>Definitions and packages</source>
        <translation>Definitionen und Pakete</translation>
    </message>
    <message>
        <source>&amp;Browse</source>
        <translation>&amp;Suchen</translation>
    </message>
    <message>
        <source>Definitions and packages (*.sip *.cal *.tdf)</source>
        <translation>Definitionen und Pakete (*.sip *.cal *.tdf)</translation>
    </message>
    <message>
        <source>All files (*)</source>
        <translation>Alle Dateien (*)</translation>
    </message>
</context>
<context>
    <name>qor::CForm</name>
    <message>
        <source>Browse</source>
        <translation>Suchen</translation>
    </message>
    <message>
        <source>Browse: %1</source>
        <translation>Suchen: %1</translation>
    </message>
    <message>
        <source>It is not in the session any more.</source>
        <translation>Es gehört nicht mehr zur Sitzung.</translation>
    </message>
    <message>
        <source>Speed [baud]</source>
        <translation>Rate [Baud]</translation>
    </message>
    <message>
        <source>Format</source>
        <translation>Format</translation>
    </message>
    <message>
        <source>&amp;Format</source>
        <translation>&amp;Format</translation>
    </message>
    <message>
        <source>&amp;Speed [baud]</source>
        <translation>&amp;Rate [Baud]</translation>
    </message>
    <message>
        <source>&amp;Station</source>
        <translation>&amp;Station</translation>
    </message>
    <message>
        <source>C&amp;ast</source>
        <translation>&amp;Profil</translation>
    </message>
    <message>
        <source>C&amp;ruise</source>
        <translation>&amp;Fahrt</translation>
    </message>
    <message>
        <source>&amp;Operator</source>
        <translation>&amp;Bediener</translation>
    </message>
    <message>
        <source>&amp;Latitude</source>
        <translation>B&amp;reite</translation>
    </message>
    <message>
        <source>Lon&amp;gitude</source>
        <translation>&amp;Länge</translation>
    </message>
    <message>
        <source>&amp;Zone</source>
        <translation>&amp;Zone</translation>
    </message>
    <message>
        <source>Co&amp;mment</source>
        <translation>&amp;Kommentar</translation>
    </message>
    <message>
        <source>Time stamp: the time at which a log begins</source>
        <translation>Zeitstempel: die Zeit, zu der ein Log beginnt</translation>
    </message>
    <message>
        <source>Station and cast: the cast moves on by itself</source>
        <translation>Station und Profil: das Profil zählt von selbst weiter</translation>
    </message>
    <message>
        <source>File name: as it is given</source>
        <translation>Dateiname: wie er angegeben ist</translation>
    </message>
    <message>
        <source>SQM: a name and a number that counts up</source>
        <translation>SQM: ein Name und eine Nummer, die weiterzählt</translation>
    </message>
    <message>
        <source>&amp;Names</source>
        <translation>&amp;Namen</translation>
    </message>
    <message>
        <source>Station</source>
        <translation>Station</translation>
    </message>
    <message>
        <source>Log options</source>
        <translation>Log-Optionen</translation>
    </message>
    <message>
        <source>&amp;End each log after a time</source>
        <translation>Jedes Log nach einer Zeit &amp;beenden</translation>
    </message>
    <message>
        <source>&amp;Length [h:mm:ss]</source>
        <translation>&amp;Dauer [h:mm:ss]</translation>
    </message>
    <message>
        <source>&amp;Begin a log again and again</source>
        <translation>Immer wieder ein Log be&amp;ginnen</translation>
    </message>
    <message>
        <source>Pa&amp;use between logs [h:mm:ss]</source>
        <translation>Pa&amp;use zwischen Logs [h:mm:ss]</translation>
    </message>
    <message>
        <source>&amp;Time stamps once a second ($PCZDA)</source>
        <translation>&amp;Zeitstempel jede Sekunde ($PCZDA)</translation>
    </message>
    <message>
        <source>&amp;Position of the GPS in the header</source>
        <translation>&amp;Position des GPS im Kopf</translation>
    </message>
    <message>
        <source>No instrument has the role of the GPS.</source>
        <translation>Kein Instrument hat die Rolle des GPS.</translation>
    </message>
    <message>
        <source>&amp;Replace an existing file where nobody can be asked</source>
        <translation>Vorhandene Datei &amp;ersetzen, wo niemand gefragt werden kann</translation>
    </message>
    <message>
        <source>Naming of logs</source>
        <translation>Namen der Logs</translation>
    </message>
    <message>
        <source>&amp;Folder</source>
        <translation>&amp;Ordner</translation>
    </message>
    <message>
        <source>File &amp;name</source>
        <translation>Datei&amp;name</translation>
    </message>
    <message>
        <source>SQM &amp;base name</source>
        <translation>SQM-&amp;Grundname</translation>
    </message>
    <message>
        <source>SQM n&amp;umber</source>
        <translation>SQM-N&amp;ummer</translation>
    </message>
    <message>
        <source>Next log</source>
        <translation>Nächstes Log</translation>
    </message>
    <message>
        <source>The next log has no name yet.</source>
        <translation>Das nächste Log hat noch keinen Namen.</translation>
    </message>
    <message>
        <source>The next log: %1</source>
        <translation>Das nächste Log: %1</translation>
    </message>
    <message>
        <source>Begin a log</source>
        <translation>Ein Log beginnen</translation>
    </message>
    <message>
        <source>&amp;Log as shown</source>
        <translation>Wie gezeigt &amp;loggen</translation>
    </message>
    <message>
        <source>C&amp;hange first</source>
        <translation>Erst &amp;ändern</translation>
    </message>
    <message>
        <source>Pressure tare</source>
        <translation>Druck-Tara</translation>
    </message>
    <message>
        <source>What the pressure sensor of the profiler reads in air. Every depth is less by it.</source>
        <translation>Was der Drucksensor des Profilers in Luft anzeigt. Jede Tiefe ist um so viel kleiner.</translation>
    </message>
    <message>
        <source>&amp;Pressure in air [dbar]</source>
        <translation>&amp;Druck in Luft [dbar]</translation>
    </message>
    <message>
        <source>Comment at %1</source>
        <translation>Kommentar um %1</translation>
    </message>
    <message>
        <source>&amp;Comment</source>
        <translation>&amp;Kommentar</translation>
    </message>
    <message>
        <source>Port</source>
        <translation>Anschluss</translation>
    </message>
    <message>
        <source>&amp;Try again when lost</source>
        <translation>Nach Verlust erneut &amp;versuchen</translation>
    </message>
    <message>
        <source>&amp;Instruments</source>
        <translation>&amp;Instrumente</translation>
    </message>
    <message>
        <source>First log</source>
        <translation>Erstes Log</translation>
    </message>
    <message>
        <source>C&amp;hange</source>
        <translation>Ä&amp;ndern</translation>
    </message>
    <message>
        <source>Change the naming of logs</source>
        <translation>Die Namen der Logs ändern</translation>
    </message>
    <message>
        <source>&amp;Add</source>
        <translation>&amp;Hinzufügen</translation>
    </message>
    <message>
        <source>Add and &amp;connect</source>
        <translation>Hinzufügen und ver&amp;binden</translation>
    </message>
    <message>
        <source>from %1</source>
        <translation>aus %1</translation>
    </message>
    <message>
        <source>as last time</source>
        <translation>wie beim letzten Mal</translation>
    </message>
    <message>
        <source>Add port</source>
        <translation>Port hinzufügen</translation>
    </message>
    <message>
        <source>&amp;Palette</source>
        <translation>&amp;Farben</translation>
    </message>
    <message>
        <source>Light</source>
        <translation>Hell</translation>
    </message>
    <message>
        <source>Dark</source>
        <translation>Dunkel</translation>
    </message>
    <message>
        <source>Night</source>
        <translation>Nacht</translation>
    </message>
    <message>
        <source>&amp;Text size (percent)</source>
        <translation>&amp;Textgröße (Prozent)</translation>
    </message>
    <message>
        <source>Warning Ranges</source>
        <translation>Warnbereiche</translation>
    </message>
    <message>
        <source>M&amp;in</source>
        <translation>M&amp;in</translation>
    </message>
    <message>
        <source>M&amp;ax</source>
        <translation>M&amp;ax</translation>
    </message>
    <message>
        <source>&amp;Enable</source>
        <translation>&amp;Einschalten</translation>
    </message>
    <message>
        <source>Alarm Ranges</source>
        <translation>Alarmbereiche</translation>
    </message>
    <message>
        <source>Mi&amp;n</source>
        <translation>Mi&amp;n</translation>
    </message>
    <message>
        <source>Ma&amp;x</source>
        <translation>Ma&amp;x</translation>
    </message>
    <message>
        <source>Ena&amp;ble</source>
        <translation>Ein&amp;schalten</translation>
    </message>
    <message>
        <source>Settings</source>
        <translation>Einstellungen</translation>
    </message>
    <message>
        <source>Look</source>
        <translation>Aussehen</translation>
    </message>
    <message>
        <source>&amp;Large targets</source>
        <translation>&amp;Große Tasten</translation>
    </message>
    <message>
        <source>Session log</source>
        <translation>Sitzungslog</translation>
    </message>
    <message>
        <source>&amp;Keep it in a file</source>
        <translation>In einer Datei &amp;aufbewahren</translation>
    </message>
    <message>
        <source>Sounds</source>
        <translation>Töne</translation>
    </message>
    <message>
        <source>&amp;Sound when a log begins or ends</source>
        <translation>&amp;Ton, wenn ein Log beginnt oder endet</translation>
    </message>
    <message>
        <source>About QorView</source>
        <translation>Über QorView</translation>
    </message>
    <message>
        <source>Acquires, shows and logs the telemetry of oceanographic instruments.</source>
        <translation>Nimmt die Telemetrie ozeanographischer Instrumente auf, zeigt und loggt sie.</translation>
    </message>
    <message>
        <source>Free software under the GNU General Public License, version 3 or later, without any warranty. Made with Qt %1 and QCustomPlot.</source>
        <translation>Freie Software unter der GNU General Public License, Version 3 oder später, ohne jede Gewähr. Gemacht mit Qt %1 und QCustomPlot.</translation>
    </message>
    <message>
        <source>File %1</source>
        <translation>Datei %1</translation>
    </message>
    <message>
        <source>&amp;Under water</source>
        <translation>&amp;Unter Wasser</translation>
    </message>
    <message>
        <source>&amp;Acquire its frames</source>
        <translation>Seine Frames &amp;aufnehmen</translation>
    </message>
    <message>
        <source>&amp;Log its frames</source>
        <translation>Seine Frames &amp;loggen</translation>
    </message>
    <message>
        <source>Check its &amp;frames</source>
        <translation>Seine &amp;Frames prüfen</translation>
    </message>
    <message>
        <source>Check the &amp;counter</source>
        <translation>Den &amp;Zähler prüfen</translation>
    </message>
    <message>
        <source>Check the check&amp;sum</source>
        <translation>Die Prüf&amp;summe prüfen</translation>
    </message>
    <message>
        <source>&amp;Beep when a check fails</source>
        <translation>Bei einem Prüffehler &amp;piepen</translation>
    </message>
    <message>
        <source>nobody</source>
        <translation>niemand</translation>
    </message>
    <message>
        <source>Port %1</source>
        <translation>Anschluss %1</translation>
    </message>
    <message>
        <source>A port that is connected is connected anew when its speed or format changes.</source>
        <translation>Ein verbundener Anschluss wird neu verbunden, wenn Rate oder Format sich ändern.</translation>
    </message>
    <message>
        <source>Instrument</source>
        <translation>Instrument</translation>
    </message>
    <message>
        <source>Instrument %1</source>
        <translation>Instrument %1</translation>
    </message>
    <message>
        <source>&amp;Title of its windows</source>
        <translation>&amp;Titel seiner Fenster</translation>
    </message>
    <message>
        <source>&amp;Use these settings for this name from now on</source>
        <translation>Diese Einstellungen für diesen Namen von nun an be&amp;nutzen</translation>
    </message>
    <message>
        <source>Package</source>
        <translation>Paket</translation>
    </message>
    <message>
        <source>Package %1</source>
        <translation>Paket %1</translation>
    </message>
    <message>
        <source>&amp;Scattering by a given salinity</source>
        <translation>&amp;Streuung mit einem gegebenen Salzgehalt</translation>
    </message>
    <message>
        <source>Salin&amp;ity</source>
        <translation>Sal&amp;zgehalt</translation>
    </message>
    <message>
        <source>&amp;Light saturation Ek [umol m-2 s-1]</source>
        <translation>&amp;Lichtsättigung Ek [umol m-2 s-1]</translation>
    </message>
    <message>
        <source>not set</source>
        <translation>nicht gesetzt</translation>
    </message>
    <message>
        <source>&amp;Window of attenuation [m]</source>
        <translation>&amp;Fenster der Abschwächung [m]</translation>
    </message>
    <message>
        <source>When these change, what is computed from the package begins anew.</source>
        <translation>Wenn diese sich ändern, beginnt neu, was aus dem Paket berechnet wird.</translation>
    </message>
    <message>
        <source>Roles</source>
        <translation>Rollen</translation>
    </message>
    <message>
        <source>The session has no instrument that could have a role.</source>
        <translation>Die Sitzung hat kein Instrument, das eine Rolle haben könnte.</translation>
    </message>
</context>
<context>
    <name>qor::CLogDesk</name>
    <message>
        <source>Nothing here shows folders; the logs are in %1.</source>
        <translation>Hier zeigt nichts Ordner; die Logs liegen in %1.</translation>
    </message>
    <message>
        <source>Open folder</source>
        <translation>Ordner öffnen</translation>
    </message>
    <message>
        <source>By hand</source>
        <translation>Von Hand</translation>
    </message>
    <message>
        <source>Undo</source>
        <translation>Zurück</translation>
    </message>
    <message>
        <source>Depth is measured without a tare.</source>
        <translation>Die Tiefe wird ohne Tara gemessen.</translation>
    </message>
    <message>
        <source>No depth has come yet, or no window shows a profile.</source>
        <translation>Es kam noch keine Tiefe, oder kein Fenster zeigt ein Profil.</translation>
    </message>
    <message>
        <source>The next log is %1.</source>
        <translation>Das nächste Log ist %1.</translation>
    </message>
    <message>
        <source>A log is open already.</source>
        <translation>Es ist schon ein Log offen.</translation>
    </message>
    <message>
        <source>No log is open.</source>
        <translation>Es ist kein Log offen.</translation>
    </message>
    <message>
        <source>The disk has %1.</source>
        <translation>Die Platte hat noch Platz: %1.</translation>
    </message>
    <message>
        <source>Change folder</source>
        <translation>Ordner ändern</translation>
    </message>
    <message>
        <source>Not logging, though frames have come for 1 min.</source>
        <translation>Es wird nicht geloggt, obwohl seit 1 min Frames kommen.</translation>
    </message>
    <message>
        <source>Start log</source>
        <translation>Log beginnen</translation>
    </message>
</context>
<context>
    <name>qor::CMainWindow</name>
    <message>
        <source>Session</source>
        <translation>Sitzung</translation>
    </message>
    <message>
        <source>full</source>
        <comment>replay at full speed</comment>
        <translation>voll</translation>
    </message>
    <message>
        <source>No replay is open.</source>
        <translation>Keine Wiedergabe ist offen.</translation>
    </message>
</context>
<context>
    <name>qor::CMessageStrip</name>
    <message>
        <source>Everything that was said, the newest first.</source>
        <translation>Alles, was gesagt wurde, das Neueste zuerst.</translation>
    </message>
    <message>
        <source>Seen: take this message away. It stays in the history.</source>
        <translation>Gesehen: diese Meldung wegnehmen. Sie bleibt im Verlauf.</translation>
    </message>
    <message>
        <source>Seen</source>
        <translation>Gesehen</translation>
    </message>
    <message>
        <source>History %1</source>
        <comment>number of unseen messages</comment>
        <translation>Verlauf %1</translation>
    </message>
    <message>
        <source>What was said</source>
        <translation>Was gesagt wurde</translation>
    </message>
    <message>
        <source>Nothing was said in this session.</source>
        <translation>In dieser Sitzung wurde nichts gesagt.</translation>
    </message>
</context>
<context>
    <name>qor::CMessages</name>
    <message>
        <source>Change folder</source>
        <translation>Ordner ändern</translation>
    </message>
    <message>
        <source>Try again</source>
        <translation>Erneut versuchen</translation>
    </message>
    <message>
        <source>Alarms are silent for two minutes.</source>
        <translation>Alarme sind für zwei Minuten stumm.</translation>
    </message>
</context>
<context>
    <name>qor::CPageModel</name>
    <message>
        <source>Enter or double-click opens its ranges.</source>
        <translation>Eingabe oder Doppelklick öffnet die Bereiche.</translation>
    </message>
</context>
<context>
    <name>qor::CPlotCanvas</name>
    <message>
        <source>%1, fixed</source>
        <comment>axis title</comment>
        <translation>%1, fest</translation>
    </message>
</context>
<context>
    <name>qor::CPlotWidget</name>
    <message>
        <source>&quot;%1&quot; could not be written: %2.</source>
        <translation>&quot;%1&quot; konnte nicht geschrieben werden: %2.</translation>
    </message>
    <message>
        <source>Pause</source>
        <translation>Anhalten</translation>
    </message>
    <message>
        <source>Reset zoom and limits</source>
        <translation>Zoom und Grenzen zurücksetzen</translation>
    </message>
    <message>
        <source>nothing was changed</source>
        <translation>nichts wurde geändert</translation>
    </message>
    <message>
        <source>Automatic limits</source>
        <translation>Automatische Grenzen</translation>
    </message>
    <message>
        <source>Limits</source>
        <translation>Grenzen</translation>
    </message>
    <message>
        <source>Logarithmic axis</source>
        <translation>Logarithmische Achse</translation>
    </message>
    <message>
        <source>Curves</source>
        <translation>Kurven</translation>
    </message>
    <message>
        <source>Cursor</source>
        <translation>Cursor</translation>
    </message>
    <message>
        <source>Difference from the cursor</source>
        <translation>Differenz vom Cursor</translation>
    </message>
    <message>
        <source>Copy picture</source>
        <translation>Bild kopieren</translation>
    </message>
    <message>
        <source>Copy visible data</source>
        <translation>Sichtbare Daten kopieren</translation>
    </message>
    <message>
        <source>Save picture or data ...</source>
        <translation>Bild oder Daten speichern ...</translation>
    </message>
    <message>
        <source>Limits of %1</source>
        <translation>Grenzen von %1</translation>
    </message>
    <message>
        <source>Give a time as hh:mm:ss, of another day as YYYY-MM-DD hh:mm:ss.</source>
        <translation>Eine Zeit als hh:mm:ss angeben, eines anderen Tages als JJJJ-MM-TT hh:mm:ss.</translation>
    </message>
    <message>
        <source>Give a number above 0.</source>
        <translation>Eine Zahl über 0 angeben.</translation>
    </message>
    <message>
        <source>Give a number.</source>
        <translation>Eine Zahl angeben.</translation>
    </message>
    <message>
        <source>From</source>
        <translation>Von</translation>
    </message>
    <message>
        <source>To</source>
        <translation>Bis</translation>
    </message>
    <message>
        <source>Give more than in the first field.</source>
        <translation>Mehr als im ersten Feld angeben.</translation>
    </message>
    <message>
        <source>Logarithmic</source>
        <translation>Logarithmisch</translation>
    </message>
    <message>
        <source>Automatic</source>
        <translation>Automatisch</translation>
    </message>
    <message>
        <source>Reset</source>
        <translation>Zurück</translation>
    </message>
    <message>
        <source>Limits were set by hand. Reset gives the plot back its own (Home).</source>
        <translation>Grenzen sind von Hand gesetzt. Zurück gibt dem Diagramm seine eigenen (Pos1).</translation>
    </message>
    <message>
        <source>&quot;%1&quot; cannot be written: its name must end in .png, .svg, .pdf or .csv.</source>
        <translation>„%1“ kann nicht geschrieben werden: Der Name muss auf .png, .svg, .pdf oder .csv enden.</translation>
    </message>
</context>
<context>
    <name>qor::CPortPicker</name>
    <message>
        <source>No serial port is found. Plug in an adapter, or name a port.</source>
        <translation>Kein serieller Anschluss gefunden. Einen Adapter einstecken oder einen Anschluss nennen.</translation>
    </message>
    <message>
        <source>Looking for ports.</source>
        <translation>Suche nach Anschlüssen.</translation>
    </message>
    <message>
        <source>&amp;Other</source>
        <translation>&amp;Anderer</translation>
    </message>
    <message>
        <source>Name of another port</source>
        <translation>Name eines anderen Anschlusses</translation>
    </message>
    <message>
        <source>Copy command</source>
        <translation>Befehl kopieren</translation>
    </message>
    <message>
        <source>%1, last time %2</source>
        <translation>%1, zuletzt %2</translation>
    </message>
</context>
<context>
    <name>qor::CRealityCheckBar</name>
    <message>
        <source>Series of the display that leads</source>
        <translation>Reihe der führenden Anzeige</translation>
    </message>
    <message>
        <source>Limit</source>
        <translation>Grenze</translation>
    </message>
    <message>
        <source>Upper limit of the display that leads</source>
        <translation>Obere Grenze der führenden Anzeige</translation>
    </message>
</context>
<context>
    <name>qor::CReplayBar</name>
    <message>
        <source>Back to the start.</source>
        <translation>Zurück zum Anfang.</translation>
    </message>
    <message>
        <source>How fast the replay runs.</source>
        <translation>Wie schnell die Wiedergabe läuft.</translation>
    </message>
    <message>
        <source>Speed</source>
        <translation>Tempo</translation>
    </message>
    <message>
        <source>Place in the replay</source>
        <translation>Stelle in der Wiedergabe</translation>
    </message>
    <message>
        <source>Hold the replay (Ctrl+Space).</source>
        <translation>Wiedergabe anhalten (Strg+Leertaste).</translation>
    </message>
    <message>
        <source>Play on (Ctrl+Space).</source>
        <translation>Weiterspielen (Strg+Leertaste).</translation>
    </message>
</context>
<context>
    <name>qor::CReplayDesk</name>
    <message>
        <source>No definition beside %1 finds frames in it. Add its instruments.</source>
        <translation>Keine Definition neben %1 findet Frames darin. Seine Instrumente hinzufügen.</translation>
    </message>
    <message>
        <source>Add instruments</source>
        <translation>Instrumente hinzufügen</translation>
    </message>
</context>
<context>
    <name>qor::CSessionDesk</name>
    <message>
        <source>A log is open. End it and close the session?</source>
        <translation>Ein Log ist offen. Es beenden und die Sitzung schließen?</translation>
    </message>
    <message>
        <source>The session was changed and not saved. Close it without saving?</source>
        <translation>Die Sitzung wurde geändert und nicht gesichert. Ohne Sichern schließen?</translation>
    </message>
    <message>
        <source>Open a session</source>
        <translation>Sitzung öffnen</translation>
    </message>
    <message>
        <source>Sessions (*.qor)</source>
        <translation>Sitzungen (*.qor)</translation>
    </message>
    <message>
        <source>All files (*)</source>
        <translation>Alle Dateien (*)</translation>
    </message>
    <message>
        <source>Save the session</source>
        <translation>Die Sitzung sichern</translation>
    </message>
    <message>
        <source>The session is kept in %1.</source>
        <translation>Die Sitzung liegt in %1.</translation>
    </message>
    <message>
        <source>The practice is not installed; install the program again.</source>
        <translation>Die Übung ist nicht installiert; das Programm neu installieren.</translation>
    </message>
    <message>
        <source>No practice is open.</source>
        <translation>Es ist keine Übung offen.</translation>
    </message>
    <message>
        <source>Replay a raw log</source>
        <translation>Rohlog abspielen</translation>
    </message>
    <message>
        <source>A session without a name</source>
        <translation>Eine Sitzung ohne Namen</translation>
    </message>
    <message>
        <source>Raw logs (*.raw)</source>
        <translation>Rohlogs (*.raw)</translation>
    </message>
</context>
<context>
    <name>qor::CSessionTree</name>
    <message>
        <source>Session tree</source>
        <translation>Sitzungsbaum</translation>
    </message>
    <message>
        <source>This session has no port yet.</source>
        <translation>Diese Sitzung hat noch keinen Port.</translation>
    </message>
    <message>
        <source>Add port</source>
        <translation>Port hinzufügen</translation>
    </message>
</context>
<context>
    <name>qor::CSourceDesk</name>
    <message>
        <source>All files (*)</source>
        <translation>Alle Dateien (*)</translation>
    </message>
    <message>
        <source>Add port ...</source>
        <translation>Anschluss hinzufügen ...</translation>
    </message>
    <message>
        <source>Connect all</source>
        <translation>Alle verbinden</translation>
    </message>
    <message>
        <source>Pause</source>
        <translation>Anhalten</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Abspielen</translation>
    </message>
    <message>
        <source>Disconnect</source>
        <translation>Trennen</translation>
    </message>
    <message>
        <source>Connect</source>
        <translation>Verbinden</translation>
    </message>
    <message>
        <source>Try again when lost</source>
        <translation>Nach Verlust erneut versuchen</translation>
    </message>
    <message>
        <source>Add instruments ...</source>
        <translation>Instrumente hinzufügen ...</translation>
    </message>
    <message>
        <source>Add instruments</source>
        <translation>Instrumente hinzufügen</translation>
    </message>
    <message>
        <source>Definitions and packages (*.cal *.tdf *.sip)</source>
        <translation>Definitionen und Pakete (*.cal *.tdf *.sip)</translation>
    </message>
    <message>
        <source>Reset counts</source>
        <translation>Zähler zurücksetzen</translation>
    </message>
    <message>
        <source>Properties ...</source>
        <translation>Eigenschaften ...</translation>
    </message>
    <message>
        <source>Remove</source>
        <translation>Entfernen</translation>
    </message>
    <message>
        <source>%1 could not be removed; the session log says why.</source>
        <translation>%1 konnte nicht entfernt werden; das Sitzungslog sagt, warum.</translation>
    </message>
    <message>
        <source>New window</source>
        <translation>Neues Fenster</translation>
    </message>
    <message>
        <source>Immersed (Wet)</source>
        <translation>Eingetaucht (nass)</translation>
    </message>
    <message>
        <source>Acquire</source>
        <translation>Aufnehmen</translation>
    </message>
    <message>
        <source>Keep its settings as default</source>
        <translation>Seine Einstellungen als Vorgabe behalten</translation>
    </message>
    <message>
        <source>Move to</source>
        <translation>Verschieben nach</translation>
    </message>
    <message>
        <source>Roles ...</source>
        <translation>Rollen ...</translation>
    </message>
    <message>
        <source>It goes with its package.</source>
        <translation>Es geht mit seinem Paket.</translation>
    </message>
</context>
<context>
    <name>qor::CStartPage</name>
    <message>
        <source>Practice</source>
        <translation>Übung</translation>
    </message>
    <message>
        <source>Simulated instruments, no hardware needed. Curves move at once.</source>
        <translation>Simulierte Instrumente, ganz ohne Geräte. Kurven laufen sofort.</translation>
    </message>
    <message>
        <source>New session</source>
        <translation>Neue Sitzung</translation>
    </message>
    <message>
        <source>Port, instruments, log.</source>
        <translation>Port, Instrumente, Log.</translation>
    </message>
    <message>
        <source>Find instruments</source>
        <translation>Instrumente suchen</translation>
    </message>
    <message>
        <source>Listen on the free ports.</source>
        <translation>An den freien Ports horchen.</translation>
    </message>
    <message>
        <source>Open a session</source>
        <translation>Sitzung öffnen</translation>
    </message>
    <message>
        <source>A kept session.</source>
        <translation>Eine aufgehobene Sitzung.</translation>
    </message>
    <message>
        <source>Replay a raw log</source>
        <translation>Rohlog abspielen</translation>
    </message>
    <message>
        <source>With pause, speed and seeking.</source>
        <translation>Mit Pause, Tempo und Springen.</translation>
    </message>
    <message>
        <source>Files can be dropped anywhere: definitions, packages, sessions, raw logs.</source>
        <translation>Dateien können überall abgelegt werden: Definitionen, Pakete, Sitzungen, Rohlogs.</translation>
    </message>
    <message>
        <source>%1 ended unexpectedly.</source>
        <translation>%1 endete unerwartet.</translation>
    </message>
    <message>
        <source>Restore</source>
        <translation>Wiederherstellen</translation>
    </message>
    <message>
        <source>No session was open here before.</source>
        <translation>Hier war noch keine Sitzung offen.</translation>
    </message>
    <message>
        <source>Sessions of late</source>
        <translation>Letzte Sitzungen</translation>
    </message>
</context>
<context>
    <name>qor::CToolRowButton</name>
    <message>
        <source>Hold for one second.</source>
        <translation>Eine Sekunde halten.</translation>
    </message>
</context>
<context>
    <name>qor::CTreeModel</name>
    <message>
        <source>Instrument</source>
        <translation>Instrument</translation>
    </message>
    <message>
        <source>Age</source>
        <translation>Alter</translation>
    </message>
    <message>
        <source>Hz</source>
        <comment>frames a second, column</comment>
        <translation>Hz</translation>
    </message>
</context>
<context>
    <name>qor::CViewWindow</name>
    <message>
        <source>Save the picture or the data</source>
        <translation>Das Bild oder die Daten sichern</translation>
    </message>
    <message>
        <source>Pictures (*.png *.svg *.pdf)</source>
        <translation>Bilder (*.png *.svg *.pdf)</translation>
    </message>
    <message>
        <source>Data (*.csv)</source>
        <translation>Daten (*.csv)</translation>
    </message>
</context>
<context>
    <name>qor::CWindowDesk</name>
    <message>
        <source>Show</source>
        <translation>Zeigen</translation>
    </message>
    <message>
        <source>Silence 2 min</source>
        <translation>2 min stumm</translation>
    </message>
</context>
<context>
    <name>qor::CWindowTitleBar</name>
    <message>
        <source>Pause this window; nothing is lost meanwhile (Space).</source>
        <translation>Dieses Fenster anhalten; nichts geht inzwischen verloren (Leertaste).</translation>
    </message>
    <message>
        <source>Reset zoom and limits (Home).</source>
        <translation>Zoom und Grenzen zurücksetzen (Pos1).</translation>
    </message>
    <message>
        <source>What this window can show and do (Shift+F10).</source>
        <translation>Was dieses Fenster zeigen und tun kann (Umschalt+F10).</translation>
    </message>
    <message>
        <source>Take the window out of the frame, or put it back.</source>
        <translation>Das Fenster aus dem Rahmen nehmen oder zurücksetzen.</translation>
    </message>
    <message>
        <source>Close this window (Ctrl+W).</source>
        <translation>Dieses Fenster schließen (Strg+W).</translation>
    </message>
    <message>
        <source>PAUSED %1</source>
        <translation>ANGEHALTEN %1</translation>
    </message>
</context>
</TS>
