<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE" sourcelanguage="en">
<context>
    <name>CarStepper</name>
    <message>
        <source>Fewer</source>
        <translation>Weniger</translation>
    </message>
    <message>
        <source>More</source>
        <translation>Mehr</translation>
    </message>
</context>
<context>
    <name>CarSwitch</name>
    <message>
        <source>On</source>
        <translation>An</translation>
    </message>
    <message>
        <source>Off</source>
        <translation>Aus</translation>
    </message>
</context>
<context>
    <name>HotspotPage</name>
    <message>
        <source>Hotspot</source>
        <translation>Hotspot</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>New passphrase; empty keeps it</source>
        <translation>Neues Kennwort; leer bleibt es</translation>
    </message>
    <message>
        <source>Show the present passphrase</source>
        <translation>Jetziges Kennwort zeigen</translation>
    </message>
    <message>
        <source>Hide the passphrase</source>
        <translation>Kennwort verbergen</translation>
    </message>
    <message>
        <source>Protection</source>
        <translation>Schutz</translation>
    </message>
    <message>
        <source>WPA2</source>
        <translation>WPA2</translation>
    </message>
    <message>
        <source>WPA and WPA2</source>
        <translation>WPA und WPA2</translation>
    </message>
    <message>
        <source>WPA</source>
        <translation>WPA</translation>
    </message>
    <message>
        <source>None, open</source>
        <translation>Keiner, offen</translation>
    </message>
    <message>
        <source>Band</source>
        <translation>Band</translation>
    </message>
    <message>
        <source>2.4 GHz</source>
        <translation>2,4 GHz</translation>
    </message>
    <message>
        <source>5 GHz</source>
        <translation>5 GHz</translation>
    </message>
    <message>
        <source>Clients at most</source>
        <translation>Höchstens so viele Geräte</translation>
    </message>
    <message>
        <source>Block connections</source>
        <translation>Verbindungen sperren</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Apply</source>
        <translation>Übernehmen</translation>
    </message>
    <message>
        <source>Revert</source>
        <translation>Verwerfen</translation>
    </message>
    <message>
        <source>Read the settings</source>
        <translation>Einstellungen lesen</translation>
    </message>
</context>
<context>
    <name>InterfaceRow</name>
    <message>
        <source>%1 Preferred.</source>
        <translation>%1 Bevorzugt.</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Ask for an address</source>
        <translation>Adresse anfordern</translation>
    </message>
</context>
<context>
    <name>Main</name>
    <message>
        <source>Settings</source>
        <translation>Einstellungen</translation>
    </message>
</context>
<context>
    <name>NetworkDetails</name>
    <message>
        <source>Back</source>
        <translation>Zurück</translation>
    </message>
    <message>
        <source>This network is not there any more.</source>
        <translation>Dieses Netzwerk ist nicht mehr da.</translation>
    </message>
    <message>
        <source>Address</source>
        <translation>Adresse</translation>
    </message>
    <message>
        <source>Gateway</source>
        <translation>Gateway</translation>
    </message>
    <message>
        <source>Carried by</source>
        <translation>Getragen von</translation>
    </message>
    <message>
        <source>Hardware address</source>
        <translation>Hardware-Adresse</translation>
    </message>
    <message>
        <source>Its address</source>
        <translation>Seine Adresse</translation>
    </message>
    <message>
        <source>Automatic</source>
        <translation>Automatisch</translation>
    </message>
    <message>
        <source>Manual</source>
        <translation>Von Hand</translation>
    </message>
    <message>
        <source>Netmask, or the length of the prefix</source>
        <translation>Netzmaske oder Länge des Präfixes</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Apply</source>
        <translation>Übernehmen</translation>
    </message>
</context>
<context>
    <name>NetworkDialog</name>
    <message>
        <source>Connecting …</source>
        <translation>Wird verbunden …</translation>
    </message>
    <message>
        <source>Connected · %1</source>
        <translation>Verbunden · %1</translation>
    </message>
    <message>
        <source>This car cannot join a network with this protection.</source>
        <translation>Mit diesem Schutz kann das Auto sich nicht verbinden.</translation>
    </message>
    <message>
        <source>This network is open: others can read what you send.</source>
        <translation>Dieses Netzwerk ist offen: Andere können mitlesen.</translation>
    </message>
    <message>
        <source>An open network has the same name. It will not be used.</source>
        <translation>Ein offenes Netzwerk heißt genauso. Es wird nicht benutzt.</translation>
    </message>
    <message>
        <source>Passkey</source>
        <translation>Schlüssel</translation>
    </message>
    <message>
        <source>Show the passkey</source>
        <translation>Schlüssel zeigen</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
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
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Disconnecting …</source>
        <translation>Wird getrennt …</translation>
    </message>
    <message>
        <source>The name of this network cannot be read, so it cannot be joined.</source>
        <translation>Der Name dieses Netzes ist nicht lesbar; es kann daher nicht verbunden werden.</translation>
    </message>
</context>
<context>
    <name>NetworksPage</name>
    <message>
        <source>Networks of the car</source>
        <translation>Netzwerke des Autos</translation>
    </message>
</context>
<context>
    <name>SettingsScreen</name>
    <message>
        <source>Typing is locked while the car moves.</source>
        <translation>Während der Fahrt ist das Tippen gesperrt.</translation>
    </message>
    <message>
        <source>Networks</source>
        <translation>Netzwerke</translation>
    </message>
    <message>
        <source>Wi-Fi</source>
        <translation>WLAN</translation>
    </message>
    <message>
        <source>Hotspot</source>
        <translation>Hotspot</translation>
    </message>
</context>
<context>
    <name>WifiPage</name>
    <message>
        <source>Wi-Fi</source>
        <translation>WLAN</translation>
    </message>
    <message>
        <source>Looking for networks …</source>
        <translation>Netzwerke werden gesucht …</translation>
    </message>
    <message>
        <source>No networks in range.</source>
        <translation>Keine Netzwerke in Reichweite.</translation>
    </message>
</context>
<context>
    <name>WifiRow</name>
    <message>
        <source>Connecting …</source>
        <translation>Wird verbunden …</translation>
    </message>
    <message>
        <source>Connected</source>
        <translation>Verbunden</translation>
    </message>
    <message>
        <source>Signal %1 of 4</source>
        <translation>Signal %1 von 4</translation>
    </message>
</context>
</TS>
