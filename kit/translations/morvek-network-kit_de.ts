<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>morvek::HotspotApply</name>
    <message>
        <source>The settings of the hotspot are being changed already.</source>
        <translation>Die Einstellungen des Hotspots werden schon geändert.</translation>
    </message>
    <message>
        <source>The hotspot is being switched on.</source>
        <translation>Der Hotspot wird eingeschaltet.</translation>
    </message>
    <message>
        <source>The settings of the hotspot have not been read yet.</source>
        <translation>Die Einstellungen des Hotspots sind noch nicht gelesen.</translation>
    </message>
    <message>
        <source>The settings are not what was asked for: another application may have changed them.</source>
        <translation>Die Einstellungen sind andere als gewünscht: Vielleicht hat eine andere Anwendung sie geändert.</translation>
    </message>
    <message>
        <source>The settings were changed, but not read again.</source>
        <translation>Die Einstellungen wurden geändert, aber nicht wieder gelesen.</translation>
    </message>
    <message>
        <source>The settings may still be changed.</source>
        <translation>Die Einstellungen ändern sich vielleicht noch.</translation>
    </message>
    <message>
        <source>No settings were changed.</source>
        <translation>Die Einstellungen sind unverändert.</translation>
    </message>
    <message>
        <source>The settings were changed, but cannot be read again.</source>
        <translation>Die Einstellungen wurden geändert, sind aber nicht wieder zu lesen.</translation>
    </message>
    <message>
        <source>The hotspot service refuses these settings.</source>
        <translation>Der Hotspot-Dienst nimmt diese Einstellungen nicht an.</translation>
    </message>
    <message>
        <source>No settings were changed: those of now cannot be read.</source>
        <translation>Die Einstellungen sind unverändert: Die jetzigen sind nicht zu lesen.</translation>
    </message>
</context>
<context>
    <name>morvek::HotspotController</name>
    <message>
        <source>The hotspot is being switched on.</source>
        <translation>Der Hotspot wird eingeschaltet.</translation>
    </message>
    <message>
        <source>The hotspot is being switched off.</source>
        <translation>Der Hotspot wird ausgeschaltet.</translation>
    </message>
    <message>
        <source>The hotspot is on.</source>
        <translation>Der Hotspot ist an.</translation>
    </message>
    <message>
        <source>The hotspot is off.</source>
        <translation>Der Hotspot ist aus.</translation>
    </message>
</context>
<context>
    <name>morvek::HotspotFetch</name>
    <message>
        <source>The settings were not read.</source>
        <translation>Die Einstellungen wurden nicht gelesen.</translation>
    </message>
    <message>
        <source>The hotspot service does not tell its settings.</source>
        <translation>Der Hotspot-Dienst nennt seine Einstellungen nicht.</translation>
    </message>
</context>
<context>
    <name>morvek::HotspotForm</name>
    <message>
        <source>Enter a name.</source>
        <translation>Einen Namen eingeben.</translation>
    </message>
    <message>
        <source>The name is too long: 32 plain letters at most, fewer with accents or of other scripts.</source>
        <translation>Der Name ist zu lang: höchstens 32 einfache Buchstaben, mit Umlauten oder anderen Schriften weniger.</translation>
    </message>
    <message>
        <source>The name has a character that cannot be used.</source>
        <translation>Der Name hat ein Zeichen, das nicht geht.</translation>
    </message>
    <message>
        <source>Enter a passphrase.</source>
        <translation>Ein Kennwort eingeben.</translation>
    </message>
    <message>
        <source>The passphrase is too short: 8 characters at least.</source>
        <translation>Das Kennwort ist zu kurz: mindestens 8 Zeichen.</translation>
    </message>
    <message>
        <source>The passphrase is too long: 63 characters at most.</source>
        <translation>Das Kennwort ist zu lang: höchstens 63 Zeichen.</translation>
    </message>
    <message>
        <source>The passphrase has a character that cannot be used: take plain letters, digits and signs.</source>
        <translation>Das Kennwort hat ein Zeichen, das nicht geht: nur Buchstaben ohne Umlaute, Ziffern und Satzzeichen.</translation>
    </message>
    <message>
        <source>Choose how the hotspot is protected.</source>
        <translation>Wählen, wie der Hotspot geschützt ist.</translation>
    </message>
    <message>
        <source>Enter how many devices may connect: 1 at least.</source>
        <translation>Eingeben, wie viele Geräte sich verbinden dürfen: mindestens 1.</translation>
    </message>
    <message>
        <source>Enter how long it stays on unused: 0 or more.</source>
        <translation>Eingeben, wie lange er unbenutzt an bleibt: 0 oder mehr.</translation>
    </message>
</context>
<context>
    <name>morvek::HotspotRequest</name>
    <message>
        <source>Cancelled. %1</source>
        <translation>Abgebrochen. %1</translation>
    </message>
    <message>
        <source>The hotspot service does not answer. %1</source>
        <translation>Der Hotspot-Dienst antwortet nicht. %1</translation>
    </message>
    <message>
        <source>The hotspot service has stopped. %1</source>
        <translation>Der Hotspot-Dienst läuft nicht mehr. %1</translation>
    </message>
</context>
<context>
    <name>morvek::HotspotSwitch</name>
    <message>
        <source>The settings of the hotspot are being changed.</source>
        <translation>Die Einstellungen des Hotspots werden gerade geändert.</translation>
    </message>
    <message>
        <source>The hotspot cannot start: its settings are not complete.</source>
        <translation>Der Hotspot kann nicht starten: Seine Einstellungen sind nicht vollständig.</translation>
    </message>
    <message>
        <source>The hotspot was switched off again.</source>
        <translation>Der Hotspot wurde wieder ausgeschaltet.</translation>
    </message>
    <message>
        <source>The hotspot was switched on again.</source>
        <translation>Der Hotspot wurde wieder eingeschaltet.</translation>
    </message>
    <message>
        <source>The hotspot is to be switched off instead.</source>
        <translation>Der Hotspot soll stattdessen ausgeschaltet werden.</translation>
    </message>
    <message>
        <source>The hotspot is to be switched on instead.</source>
        <translation>Der Hotspot soll stattdessen eingeschaltet werden.</translation>
    </message>
    <message>
        <source>The hotspot was not switched on.</source>
        <translation>Der Hotspot wurde nicht eingeschaltet.</translation>
    </message>
    <message>
        <source>The hotspot was not switched off.</source>
        <translation>Der Hotspot wurde nicht ausgeschaltet.</translation>
    </message>
    <message>
        <source>The hotspot has not come on in time. It still may.</source>
        <translation>Der Hotspot ist nicht rechtzeitig angegangen. Er kann es noch tun.</translation>
    </message>
    <message>
        <source>The hotspot has not gone off in time. It still may.</source>
        <translation>Der Hotspot ist nicht rechtzeitig ausgegangen. Er kann es noch tun.</translation>
    </message>
    <message>
        <source>The hotspot may still come on.</source>
        <translation>Der Hotspot geht vielleicht noch an.</translation>
    </message>
    <message>
        <source>The hotspot may still go off.</source>
        <translation>Der Hotspot geht vielleicht noch aus.</translation>
    </message>
    <message>
        <source>The hotspot was not switched on: its settings cannot be read.</source>
        <translation>Der Hotspot wurde nicht eingeschaltet: Seine Einstellungen sind nicht zu lesen.</translation>
    </message>
    <message>
        <source>The hotspot service refuses to switch on.</source>
        <translation>Der Hotspot-Dienst lehnt das Einschalten ab.</translation>
    </message>
    <message>
        <source>The hotspot service refuses to switch off.</source>
        <translation>Der Hotspot-Dienst lehnt das Ausschalten ab.</translation>
    </message>
</context>
<context>
    <name>morvek::InterfaceConfiguration</name>
    <message>
        <source>Cancelled. %1 may still lose its address, and get the new settings.</source>
        <translation>Abgebrochen. %1 verliert vielleicht noch seine Adresse und bekommt die neuen Einstellungen.</translation>
    </message>
    <message>
        <source>Cancelled. %1 may still get the new settings.</source>
        <translation>Abgebrochen. %1 bekommt vielleicht noch die neuen Einstellungen.</translation>
    </message>
    <message>
        <source>Cancelled. %1 may still connect with the new settings.</source>
        <translation>Abgebrochen. %1 verbindet sich vielleicht noch mit den neuen Einstellungen.</translation>
    </message>
</context>
<context>
    <name>morvek::InterfaceController</name>
    <message>
        <source>The addresses are missing.</source>
        <translation>Die Adressen fehlen.</translation>
    </message>
    <message>
        <source>Address: %1</source>
        <translation>Adresse: %1</translation>
    </message>
    <message>
        <source>Netmask: %1</source>
        <translation>Netzmaske: %1</translation>
    </message>
    <message>
        <source>Gateway: %1</source>
        <translation>Gateway: %1</translation>
    </message>
</context>
<context>
    <name>morvek::InterfaceModel</name>
    <message>
        <source>Ethernet</source>
        <translation>Ethernet</translation>
    </message>
    <message>
        <source>Wi-Fi</source>
        <translation>WLAN</translation>
    </message>
    <message>
        <source>USB</source>
        <translation>USB</translation>
    </message>
    <message>
        <source>Mobile network</source>
        <translation>Mobilfunk</translation>
    </message>
    <message>
        <source>Bluetooth</source>
        <translation>Bluetooth</translation>
    </message>
    <message>
        <source>VPN</source>
        <translation>VPN</translation>
    </message>
    <message>
        <source>Orvan bridge</source>
        <translation>Orvan-Brücke</translation>
    </message>
    <message>
        <source>Other network</source>
        <translation>Anderes Netzwerk</translation>
    </message>
    <message>
        <source>Its settings are being changed.</source>
        <translation>Die Einstellungen werden geändert.</translation>
    </message>
    <message>
        <source>Connected.</source>
        <translation>Verbunden.</translation>
    </message>
    <message>
        <source>No link: it cannot be used now.</source>
        <translation>Keine Leitung: Jetzt ist es nicht zu benutzen.</translation>
    </message>
    <message>
        <source>Waiting for an address.</source>
        <translation>Wartet auf eine Adresse.</translation>
    </message>
    <message>
        <source>It has not got an address.</source>
        <translation>Ohne Adresse.</translation>
    </message>
    <message>
        <source>Not connected.</source>
        <translation>Nicht verbunden.</translation>
    </message>
</context>
<context>
    <name>morvek::InterfaceRepair</name>
    <message>
        <source>%1 does not wait for an address.</source>
        <translation>%1 wartet auf keine Adresse.</translation>
    </message>
    <message>
        <source>%1 has no link.</source>
        <translation>%1 hat keine Leitung.</translation>
    </message>
    <message>
        <source>Cancelled. %1 may still get an address.</source>
        <translation>Abgebrochen. %1 bekommt vielleicht noch eine Adresse.</translation>
    </message>
</context>
<context>
    <name>morvek::InterfaceRequest</name>
    <message>
        <source>%1 is being changed already.</source>
        <translation>%1 wird schon geändert.</translation>
    </message>
    <message>
        <source>%1 is not there.</source>
        <translation>%1 ist nicht da.</translation>
    </message>
    <message>
        <source>The network service has stopped. %1 may be without an address.</source>
        <translation>Der Netzwerkdienst läuft nicht mehr. %1 ist vielleicht ohne Adresse.</translation>
    </message>
    <message>
        <source>%1 was refused its new settings.</source>
        <translation>%1 bekommt die neuen Einstellungen nicht: Sie wurden abgelehnt.</translation>
    </message>
    <message>
        <source>It has no address now.</source>
        <translation>Es hat jetzt keine Adresse.</translation>
    </message>
    <message>
        <source>%1 has other settings now: they were changed meanwhile.</source>
        <translation>%1 hat jetzt andere Einstellungen: Sie wurden inzwischen geändert.</translation>
    </message>
    <message>
        <source>%1 is not there any more.</source>
        <translation>%1 ist nicht mehr da.</translation>
    </message>
    <message>
        <source>%1 has not let go of its address in time. It may still get the new settings.</source>
        <translation>%1 hat seine Adresse nicht rechtzeitig abgegeben, bekommt aber vielleicht noch die neuen Einstellungen.</translation>
    </message>
    <message>
        <source>%1 waits for the network service, which has not answered in time.</source>
        <translation>%1 wartet auf den Netzwerkdienst, der nicht rechtzeitig geantwortet hat.</translation>
    </message>
    <message>
        <source>%1 has no link. It gets its address when it has one again.</source>
        <translation>%1 hat keine Leitung und bekommt seine Adresse, wenn es wieder eine hat.</translation>
    </message>
    <message>
        <source>%1 has got no address: no network has answered it.</source>
        <translation>%1 hat keine Adresse bekommen: Kein Netzwerk hat geantwortet.</translation>
    </message>
    <message>
        <source>%1 has its new settings, but has not connected in time.</source>
        <translation>%1 hat die neuen Einstellungen, sich aber nicht rechtzeitig verbunden.</translation>
    </message>
</context>
<context>
    <name>morvek::Ipv4Form</name>
    <message>
        <source>Missing.</source>
        <translation>Fehlt.</translation>
    </message>
    <message>
        <source>Not an address: four numbers from 0 to 255 with dots between them.</source>
        <translation>Keine Adresse: vier Zahlen von 0 bis 255, mit Punkten dazwischen.</translation>
    </message>
    <message>
        <source>Not a netmask: one is like 255.255.255.0, or like 24.</source>
        <translation>Keine Netzmaske: Eine ist wie 255.255.255.0 oder wie 24.</translation>
    </message>
    <message>
        <source>Not the address of a device in a network.</source>
        <translation>Nicht die Adresse eines Geräts in einem Netzwerk.</translation>
    </message>
    <message>
        <source>The first address of the network stands for the network itself.</source>
        <translation>Die erste Adresse des Netzwerks steht für das Netzwerk selbst.</translation>
    </message>
    <message>
        <source>The last address of the network stands for all its devices.</source>
        <translation>Die letzte Adresse des Netzwerks steht für alle seine Geräte.</translation>
    </message>
    <message>
        <source>Not in the network of address and netmask.</source>
        <translation>Nicht im Netzwerk von Adresse und Netzmaske.</translation>
    </message>
    <message>
        <source>This is the interface&apos;s own address: the router has another one.</source>
        <translation>Das ist die eigene Adresse: Der Router hat eine andere.</translation>
    </message>
</context>
<context>
    <name>morvek::NetworkController</name>
    <message>
        <source>The network service has stopped.</source>
        <translation>Der Netzwerkdienst läuft nicht mehr.</translation>
    </message>
    <message>
        <source>The network service has not started yet.</source>
        <translation>Der Netzwerkdienst ist noch nicht gestartet.</translation>
    </message>
    <message>
        <source>The Wi-Fi service has stopped.</source>
        <translation>Der WLAN-Dienst läuft nicht mehr.</translation>
    </message>
    <message>
        <source>The Wi-Fi service has not started yet.</source>
        <translation>Der WLAN-Dienst ist noch nicht gestartet.</translation>
    </message>
    <message>
        <source>The hotspot service has stopped.</source>
        <translation>Der Hotspot-Dienst läuft nicht mehr.</translation>
    </message>
    <message>
        <source>The hotspot service has not started yet.</source>
        <translation>Der Hotspot-Dienst ist noch nicht gestartet.</translation>
    </message>
</context>
<context>
    <name>morvek::NetworkRequest</name>
    <message>
        <source>Cancelled.</source>
        <translation>Abgebrochen.</translation>
    </message>
    <message>
        <source>No answer came in time.</source>
        <translation>Es kam nicht rechtzeitig eine Antwort.</translation>
    </message>
    <message>
        <source>The service has stopped meanwhile.</source>
        <translation>Der Dienst läuft inzwischen nicht mehr.</translation>
    </message>
</context>
<context>
    <name>morvek::NetworkSecurity</name>
    <message>
        <source>open</source>
        <translation>offen</translation>
    </message>
    <message>
        <source>unknown protection</source>
        <translation>unbekannter Schutz</translation>
    </message>
    <message>
        <source>unknown</source>
        <translation>unbekannt</translation>
    </message>
</context>
<context>
    <name>morvek::WifiController</name>
    <message>
        <source>Wi-Fi is being switched on.</source>
        <translation>WLAN wird eingeschaltet.</translation>
    </message>
    <message>
        <source>Wi-Fi is being switched off.</source>
        <translation>WLAN wird ausgeschaltet.</translation>
    </message>
    <message>
        <source>Wi-Fi is off.</source>
        <translation>WLAN ist aus.</translation>
    </message>
    <message>
        <source>Connecting to “%1”.</source>
        <translation>Verbindet sich mit „%1“.</translation>
    </message>
    <message>
        <source>Leaving “%1”.</source>
        <translation>Trennt sich von „%1“.</translation>
    </message>
    <message>
        <source>Connected to “%1”.</source>
        <translation>Verbunden mit „%1“.</translation>
    </message>
    <message>
        <source>Not connected.</source>
        <translation>Nicht verbunden.</translation>
    </message>
</context>
<context>
    <name>morvek::WifiJoin</name>
    <message>
        <source>“%1” is being joined: wait for that, or cancel it.</source>
        <translation>Die Verbindung mit „%1“ läuft noch: abwarten oder abbrechen.</translation>
    </message>
    <message>
        <source>Leaving the network was asked for meanwhile.</source>
        <translation>Inzwischen sollte das Netzwerk verlassen werden.</translation>
    </message>
    <message>
        <source>A network is joined by its name, and there is none.</source>
        <translation>Der Name des Netzwerks fehlt.</translation>
    </message>
    <message>
        <source>A passkey has 8 to 63 plain letters, digits, blanks and signs, or 64 hexadecimal digits.</source>
        <translation>Ein Schlüssel hat 8 bis 63 Buchstaben ohne Umlaute, Ziffern und Zeichen, oder 64 hexadezimale Ziffern.</translation>
    </message>
    <message>
        <source>“%1” needs a passkey. The open network of that name is not taken for it.</source>
        <translation>„%1“ braucht einen Schlüssel. Das offene Netzwerk dieses Namens wird nicht dafür genommen.</translation>
    </message>
    <message>
        <source>“%1” needs a passkey.</source>
        <translation>„%1“ braucht einen Schlüssel.</translation>
    </message>
    <message>
        <source>“%1” is open: join it without a passkey, if that is what you want.</source>
        <translation>„%1“ ist offen: ohne Schlüssel verbinden, wenn das gewollt ist.</translation>
    </message>
    <message>
        <source>“%1” cannot be joined. The open network of that name is not taken for it.</source>
        <translation>„%1“ geht nicht. Das offene Netzwerk dieses Namens wird nicht dafür genommen.</translation>
    </message>
    <message>
        <source>“%1” cannot be joined. Its security: %2.</source>
        <translation>Mit „%1“ geht keine Verbindung. Sein Schutz: %2.</translation>
    </message>
    <message>
        <source>The unit has connected to “%1” instead.</source>
        <translation>Das Auto hat sich stattdessen mit „%1“ verbunden.</translation>
    </message>
    <message>
        <source>The unit has connected to an open network of the name “%1”.</source>
        <translation>Das Auto hat sich mit einem offenen Netzwerk namens „%1“ verbunden.</translation>
    </message>
    <message>
        <source>The passkey of “%1” is wrong.</source>
        <translation>Der Schlüssel von „%1“ ist falsch.</translation>
    </message>
    <message>
        <source>Another network is being joined: wait for that.</source>
        <translation>Die Verbindung mit einem anderen Netzwerk läuft noch: abwarten.</translation>
    </message>
    <message>
        <source>The Wi-Fi service is not ready.</source>
        <translation>Der WLAN-Dienst ist nicht bereit.</translation>
    </message>
    <message>
        <source>“%1” was not joined: the Wi-Fi service has refused it.</source>
        <translation>Keine Verbindung mit „%1“: Der WLAN-Dienst hat sie abgelehnt.</translation>
    </message>
    <message>
        <source>“%1” has not let the unit in: the passkey is wrong, as a rule.</source>
        <translation>„%1“ hat das Auto nicht eingelassen: Meist ist der Schlüssel falsch.</translation>
    </message>
    <message>
        <source>“%1” has not let the unit in; it may not be open after all.</source>
        <translation>„%1“ hat das Auto nicht eingelassen; vielleicht ist es doch nicht offen.</translation>
    </message>
    <message>
        <source>“%1” is not in range.</source>
        <translation>„%1“ ist nicht in Reichweite.</translation>
    </message>
    <message>
        <source>“%1” may still be joined.</source>
        <translation>Die Verbindung mit „%1“ kommt vielleicht noch.</translation>
    </message>
    <message>
        <source>The unit is still connected to “%1”, and may yet leave it.</source>
        <translation>Das Auto ist noch mit „%1“ verbunden und trennt sich vielleicht noch davon.</translation>
    </message>
    <message>
        <source>The Wi-Fi service has stopped; “%1” may have been joined all the same.</source>
        <translation>Der WLAN-Dienst läuft nicht mehr; mit „%1“ besteht vielleicht trotzdem eine Verbindung.</translation>
    </message>
    <message>
        <source>Cancelled. Nothing has changed.</source>
        <translation>Abgebrochen. Nichts hat sich geändert.</translation>
    </message>
    <message>
        <source>Cancelled. %1</source>
        <translation>Abgebrochen. %1</translation>
    </message>
    <message>
        <source>The search for networks has not ended in time; it may have been refused.</source>
        <translation>Die Suche nach Netzwerken endete nicht rechtzeitig; vielleicht wurde sie abgelehnt.</translation>
    </message>
    <message>
        <source>Not joined in time. %1</source>
        <translation>Nicht rechtzeitig verbunden. %1</translation>
    </message>
    <message>
        <source>The name of this network cannot be read, so it cannot be joined.</source>
        <translation>Der Name dieses Netzes ist nicht lesbar; es kann daher nicht verbunden werden.</translation>
    </message>
</context>
<context>
    <name>morvek::WifiLeave</name>
    <message>
        <source>The unit has connected to “%1” meanwhile.</source>
        <translation>Das Auto hat sich inzwischen mit „%1“ verbunden.</translation>
    </message>
    <message>
        <source>“%1” has not been left in time; the request may have been refused.</source>
        <translation>„%1“ wurde nicht rechtzeitig verlassen; vielleicht wurde das abgelehnt.</translation>
    </message>
    <message>
        <source>Cancelled. “%1” may still be left.</source>
        <translation>Abgebrochen. „%1“ wird vielleicht noch verlassen.</translation>
    </message>
</context>
<context>
    <name>morvek::WifiPower</name>
    <message>
        <source>Switching Wi-Fi on was asked for meanwhile.</source>
        <translation>Inzwischen sollte WLAN eingeschaltet werden.</translation>
    </message>
    <message>
        <source>Switching Wi-Fi off was asked for meanwhile.</source>
        <translation>Inzwischen sollte WLAN ausgeschaltet werden.</translation>
    </message>
    <message>
        <source>Wi-Fi has not come on in time; the request may have been refused.</source>
        <translation>WLAN ist nicht rechtzeitig angegangen; vielleicht wurde das abgelehnt.</translation>
    </message>
    <message>
        <source>Wi-Fi has not gone off in time; the request may have been refused.</source>
        <translation>WLAN ist nicht rechtzeitig ausgegangen; vielleicht wurde das abgelehnt.</translation>
    </message>
    <message>
        <source>Cancelled. Wi-Fi may still be switched on.</source>
        <translation>Abgebrochen. WLAN geht vielleicht noch an.</translation>
    </message>
    <message>
        <source>Cancelled. Wi-Fi may still be switched off, and its network be left.</source>
        <translation>Abgebrochen. WLAN geht vielleicht noch aus, und sein Netzwerk wird verlassen.</translation>
    </message>
</context>
<context>
    <name>morvek::WifiRequest</name>
    <message>
        <source>Wi-Fi is off: switch it on first.</source>
        <translation>WLAN ist aus: erst einschalten.</translation>
    </message>
    <message>
        <source>Wi-Fi was switched off meanwhile.</source>
        <translation>WLAN wurde inzwischen ausgeschaltet.</translation>
    </message>
    <message>
        <source>The Wi-Fi service is not ready.</source>
        <translation>Der WLAN-Dienst ist nicht bereit.</translation>
    </message>
</context>
<context>
    <name>morvek::WifiScan</name>
    <message>
        <source>The search for networks has not ended in time; it may have been refused.</source>
        <translation>Die Suche nach Netzwerken endete nicht rechtzeitig; vielleicht wurde sie abgelehnt.</translation>
    </message>
</context>
</TS>
