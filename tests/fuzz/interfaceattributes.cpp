// SPDX-License-Identifier: Apache-2.0
// The attributes of an interface. A script of "NAME VALUE" and "- NAME" lines makes up updates: "." publishes what was
// collected, "!" lets the object hold it untold, "?" tells it though the object holds other values. A model of the
// record, of the signals and of the log stands beside.
#include "addresssearch.h"
#include "logcapture.h"
#include "networkingdaemon.h"
#include "zopinterfaceconnection_p.h"

#include <QtCore/QJsonDocument>

using namespace morvek;
using Connection = NetworkInterfaceProviderZop::ZopInterfaceConnection;

namespace {

bool isTrue(const QByteArray &value)
{
    return value == "true" || value == "1" || value == "yes" || value == "on";
}

QString word(const ZopDouble::Values &values, const char *name)
{
    return Fuzz::text(values.value(QLatin1String(name)).bytes());
}

struct Model
{
    AddressSearch::Found address;
    QList<QHostAddress> gateways;
    bool manual = false;
    int type = 0;
    bool isVirtual = false;
    QString macAddress;
    bool mtuKnown = true; //!< whether this model can tell the number
    int mtu = 0;
    bool available = false;
    bool connected = false;
    QStringList events;
    int lines = 0;

    void setAddresses(const QByteArray &json)
    {
        address = AddressSearch::find(QJsonDocument::fromJson(json).array());
        lines += address.isWhole() ? 0 : 1;
    }
    void setGateways(const QByteArray &json)
    {
        gateways = AddressSearch::gateways(QJsonDocument::fromJson(json).array());
    }
    void setMode(const QByteArray &value)
    {
        manual = value == "yes";
        lines += value == "no" ? 1 : 0;
    }
    void setType(const QByteArray &value)
    {
        static const QList<QByteArray> words {"wired", "wifi", "usb", "cellular", "bluetooth_dun", "vpn", "qv"};
        type = words.indexOf(value) + 1;
    }
    void setMtu(const QString &value)
    {
        mtuKnown = true;
        for (const QChar c : value)
            mtuKnown = mtuKnown && c.unicode() < 128;
        if (!Fuzz::readNumber(value, &mtu))
            mtu = 0;
    }

    /*! Reads everything, and says nothing of it. */
    void readAll(const ZopDouble::Values &held)
    {
        const auto value = [&held](const char *name) { return held.value(QLatin1String(name)).bytes(); };
        setAddresses(value("ip_addresses"));
        setMode(value("manual"));
        setGateways(value("ip_gateway"));
        macAddress = word(held, "link_address");
        setMtu(word(held, "mtu"));
        setType(value("type"));
        available = isTrue(value("up"));
        connected = isTrue(value("connected"));
        isVirtual = !value("parent_interface").isEmpty();
    }

    /*! What an update tells, and what the object holds when it does. */
    void apply(const ZopDouble::Values &told, const ZopDouble::Values &held)
    {
        const auto has = [&told](const char *name) { return told.contains(QLatin1String(name)); };
        const auto value = [&told](const char *name) { return told.value(QLatin1String(name)).bytes(); };
        bool changed = false;
        if (has("connected")) {
            connected = isTrue(held.value(QStringLiteral("connected")).bytes());
            events.append(connected ? QStringLiteral("connected") : QStringLiteral("disconnected"));
        }
        if (has("ip_addresses"))
            setAddresses(value("ip_addresses"));
        if (has("ip_gateway"))
            setGateways(value("ip_gateway"));
        if (has("link_address"))
            macAddress = word(held, "link_address");
        if (has("manual"))
            setMode(value("manual"));
        if (has("mtu"))
            setMtu(word(held, "mtu"));
        if (has("parent_interface")) {
            isVirtual = !value("parent_interface").isEmpty();
            events.append(QStringLiteral("parent"));
        }
        if (has("type"))
            setType(value("type"));
        if (has("up"))
            available = isTrue(held.value(QStringLiteral("up")).bytes());
        for (const char *name :
             {"ip_addresses", "ip_gateway", "link_address", "manual", "mtu", "parent_interface", "type", "up"})
            changed = changed || has(name);
        if (changed)
            events.append(QStringLiteral("changed"));
    }
};

class Play
{
public:
    Play()
        : m_connection(nullptr)
    {
        ZopDouble::store(path(), {});
        auto *object = new ZopObject(path(), ZopObject::Subscribe, false, &m_connection);
        object->setAttributeCacheEnabled(true);
        QObject::connect(object, &ZopObject::attributesChanged, &m_connection,
                         &Connection::onZopInterfaceAttributesChanged);
        note(&Connection::interfaceConnected, "connected");
        note(&Connection::interfaceDisconnected, "disconnected");
        note(&Connection::interfaceAttributesChanged, "changed");
        QObject::connect(&m_connection, &Connection::interfaceParentChanged,
                         [this] { m_events.append(QStringLiteral("parent")); });
        m_connection.setZopInterface(QStringLiteral("en0"), object);
        m_model.readAll({});
    }

    void line(const Fuzz::Line &line)
    {
        const bool stores = line.word == "." || line.word == "!";
        const bool tells = line.word == "." || line.word == "?";
        if (line.word == "-")
            m_removals.insert(Fuzz::text(line.rest));
        else if (line.word == "read")
            readAgain();
        else if (!stores && !tells)
            m_values.insert(Fuzz::text(line.word), ZopVariant(line.rest, "text"));
        if (stores)
            store();
        if (tells) {
            ZopDouble::tell(path(), m_values, m_removals);
            m_model.apply(m_values, m_held);
        }
        if (stores || tells) {
            m_values.clear();
            m_removals.clear();
        }
        check();
    }

private:
    static QString path() { return NetworkingDaemon::interfacePath(QStringLiteral("en0")); }

    void note(void (Connection::*signal)(const NetworkInterfaceData &), const char *event)
    {
        QObject::connect(&m_connection, signal, [this, event](const NetworkInterfaceData &data) {
            Fuzz::expect(&data == m_connection.interfaceData.get(), "a signal carries the record");
            m_events.append(QLatin1String(event));
        });
    }

    void readAgain()
    {
        m_connection.setZopInterface(QStringLiteral("en0"), m_connection.zopObject);
        m_model.readAll(m_held);
    }

    void store()
    {
        ZopDouble::store(path(), m_values, m_removals);
        for (auto it = m_values.cbegin(); it != m_values.cend(); ++it)
            m_held.insert(it.key(), it.value());
        for (const QString &name : qAsConst(m_removals))
            m_held.remove(name);
    }

    void check()
    {
        const NetworkInterfaceData &record = *m_connection.interfaceData;
        const NetworkInterfaceConfig &config = record.configuration;
        Fuzz::expectEqual(m_events, m_model.events, "the signals");
        Fuzz::expectEqual(m_log.take().size(), m_model.lines, "how many lines are logged");
        m_model.lines = 0;
        AddressSearch::expectEntries(config.ipAddresses(), m_model.address);
        Fuzz::expectEqual(config.gatewayAddresses(), m_model.gateways, "the gateways");
        Fuzz::expectEqual(int(config.type()), m_model.manual ? 1 : 0, "the kind of configuration");
        Fuzz::expectEqual(record.macAddress, m_model.macAddress, "the hardware address");
        if (m_model.mtuKnown)
            Fuzz::expectEqual(record.maxTransmissionUnit, m_model.mtu, "the MTU");
        Fuzz::expectEqual(int(record.type), m_model.type, "the type");
        Fuzz::expectEqual(record.available, m_model.available, "whether it is up");
        Fuzz::expectEqual(record.connected, m_model.connected, "whether it is connected");
        Fuzz::expectEqual(record.isVirtual, m_model.isVirtual, "whether it is virtual");
        Fuzz::expect(record.name == QLatin1String("en0") && record.priority == -1 && !record.parent, "the rest");
    }

    LogCapture m_log {7};
    Connection m_connection;
    Model m_model;
    QStringList m_events;
    ZopDouble::Values m_held;
    ZopDouble::Values m_values;
    QSet<QString> m_removals;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    ZopDouble::reset();
    Play play;
    const QList<Fuzz::Line> lines = Fuzz::script(data, size);
    for (const Fuzz::Line &line : lines)
        play.line(line);
    return 0;
}
