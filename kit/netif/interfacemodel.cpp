// SPDX-License-Identifier: Apache-2.0
#include "interfacemodel.h"

#include "wifinetworkmodel.h"

#include <networkinterface.h>

#include <QtCore/QElapsedTimer>
#include <QtCore/QSet>
#include <QtCore/QTimer>

#include <algorithm>
#include <utility>

namespace morvek {

namespace {

using Values = QMap<int, QVariant>; // by their roles

struct Row
{
    QString name;
    Values values;
    QElapsedTimer waiting; // for an address; invalid unless that is all that it lacks
};

QString typeText(NetworkInterface::InterfaceType type)
{
    switch (type) {
    case NetworkInterface::Unknown:
        break;
    case NetworkInterface::Wired:
        return InterfaceModel::tr("Ethernet");
    case NetworkInterface::Wifi:
        return InterfaceModel::tr("Wi-Fi");
    case NetworkInterface::Usb:
        return InterfaceModel::tr("USB");
    case NetworkInterface::Cellular:
        return InterfaceModel::tr("Mobile network");
    case NetworkInterface::Bluetooth:
        return InterfaceModel::tr("Bluetooth");
    case NetworkInterface::Vpn:
        return InterfaceModel::tr("VPN");
    case NetworkInterface::OrvanBridge:
        return InterfaceModel::tr("Orvan bridge");
    }
    return InterfaceModel::tr("Other network");
}

QString stateText(InterfaceModel::State state)
{
    switch (state) {
    case InterfaceModel::Configuring:
        return InterfaceModel::tr("Its settings are being changed.");
    case InterfaceModel::Connected:
        return InterfaceModel::tr("Connected.");
    case InterfaceModel::Unavailable:
        return InterfaceModel::tr("No link: it cannot be used now.");
    case InterfaceModel::Obtaining:
        return InterfaceModel::tr("Waiting for an address.");
    case InterfaceModel::WithoutAddress:
        return InterfaceModel::tr("It has not got an address.");
    case InterfaceModel::Disconnected:
        break;
    }
    return InterfaceModel::tr("Not connected.");
}

Values valuesOf(const NetworkInterface &networkInterface, const QString &preferred)
{
    const NetworkInterfaceConfig config = networkInterface.configuration();
    const QNetworkAddressEntry address = config.ipAddresses().value(0);
    return {
        {InterfaceModel::NameRole, networkInterface.name()},
        {InterfaceModel::TypeRole, int(networkInterface.type())},
        {InterfaceModel::TypeTextRole, typeText(networkInterface.type())},
        {InterfaceModel::ConnectedRole, networkInterface.connected()},
        {InterfaceModel::AvailableRole, networkInterface.available()},
        {InterfaceModel::PreferredRole, networkInterface.name() == preferred},
        {InterfaceModel::PriorityRole, networkInterface.priority()},
        {InterfaceModel::MacAddressRole, networkInterface.macAddress()},
        {InterfaceModel::MtuRole, networkInterface.maxTransmissionUnit()},
        {InterfaceModel::AddressRole, address.ip().toString()},
        {InterfaceModel::PrefixLengthRole, address.prefixLength()},
        {InterfaceModel::NetmaskRole, address.netmask().toString()},
        {InterfaceModel::GatewayRole, config.gatewayAddresses().value(0).toString()},
        {InterfaceModel::AutomaticRole, config.type() == NetworkInterfaceConfig::Auto},
        {InterfaceModel::ParentRole, networkInterface.parent().name()},
    };
}

bool lacksOnlyAnAddress(const Values &values)
{
    return !values[InterfaceModel::ConnectedRole].toBool() && values[InterfaceModel::AvailableRole].toBool()
        && values[InterfaceModel::AutomaticRole].toBool() && values[InterfaceModel::AddressRole].toString().isEmpty();
}

} // namespace

class Q_DECL_HIDDEN InterfaceModel::Private
{
public:
    explicit Private(InterfaceModel *model);

    void update();

    QMap<QString, Values> interfaces; //!< by their names, as they were told last
    QVector<Row> rows;
    QSet<QString> configuring;
    int leaseTime = 5000; // milliseconds

private:
    void remove(const QMap<QString, Values> &next);
    void insert(const QMap<QString, Values> &next);
    QVector<int> renew(Row *row, Values values);
    State stateOf(const Row &row, const Values &values) const;
    void tell(const QVector<QVector<int>> &changes);
    void awaitAddresses();

    InterfaceModel *q;
    QTimer m_wait;
    bool m_isUpdating = false;
    bool m_isOutdated = false;
};

InterfaceModel::Private::Private(InterfaceModel *model)
    : q(model)
{
    m_wait.setSingleShot(true);
    m_wait.setTimerType(Qt::PreciseTimer);
    connect(&m_wait, &QTimer::timeout, model, [this] { update(); });
}

/*! What a slot tells in between is taken over after the change that it was called for. */
void InterfaceModel::Private::update()
{
    m_isOutdated = true;
    if (std::exchange(m_isUpdating, true))
        return;
    while (std::exchange(m_isOutdated, false)) {
        const QMap<QString, Values> next = interfaces;
        const int count = rows.size();
        remove(next);
        insert(next);
        QVector<QVector<int>> changes;
        for (Row &row : rows)
            changes.append(renew(&row, next[row.name]));
        awaitAddresses();
        tell(changes);
        if (rows.size() != count)
            emit q->countChanged();
    }
    m_isUpdating = false;
}

void InterfaceModel::Private::remove(const QMap<QString, Values> &next)
{
    for (int last = rows.size() - 1; last >= 0; --last) {
        int first = last + 1;
        while (first > 0 && !next.contains(rows.at(first - 1).name))
            --first;
        if (first > last)
            continue;
        q->beginRemoveRows({}, first, last);
        rows.remove(first, last - first + 1);
        q->endRemoveRows();
        last = first;
    }
}

void InterfaceModel::Private::insert(const QMap<QString, Values> &next)
{
    int first = 0;
    for (auto it = next.begin(); it != next.end(); ++first) {
        QVector<Row> added;
        for (; it != next.end() && (first == rows.size() || it.key() != rows.at(first).name); ++it) {
            Row row;
            row.name = it.key();
            renew(&row, *it);
            added.append(row);
        }
        if (!added.isEmpty()) {
            q->beginInsertRows({}, first, first + added.size() - 1);
            for (int i = 0; i < added.size(); ++i)
                rows.insert(first + i, added.at(i));
            q->endInsertRows();
            first += added.size();
        }
        if (it != next.end())
            ++it;
    }
}

/*! Lets \a row tell \a values, and the state that follows from them; returns the roles that change. */
QVector<int> InterfaceModel::Private::renew(Row *row, Values values)
{
    if (!lacksOnlyAnAddress(values))
        row->waiting.invalidate();
    else if (!row->waiting.isValid())
        row->waiting.start();
    const State state = stateOf(*row, values);
    values[StateRole] = int(state);
    values[StateTextRole] = stateText(state);
    QVector<int> roles;
    for (auto it = values.cbegin(); it != values.cend(); ++it) {
        if (row->values.value(it.key()) != *it)
            roles.append(it.key());
    }
    row->values = values;
    return roles;
}

InterfaceModel::State InterfaceModel::Private::stateOf(const Row &row, const Values &values) const
{
    if (configuring.contains(row.name))
        return Configuring;
    if (values[ConnectedRole].toBool())
        return Connected;
    if (!values[AvailableRole].toBool())
        return Unavailable;
    if (!row.waiting.isValid())
        return Disconnected;
    return row.waiting.elapsed() >= leaseTime ? WithoutAddress : Obtaining;
}

/*! Tells the roles that have changed in each row, those of rows that stand together at once. */
void InterfaceModel::Private::tell(const QVector<QVector<int>> &changes)
{
    for (int first = 0; first < changes.size();) {
        const QVector<int> &roles = changes.at(first);
        int end = first + 1;
        while (end < changes.size() && changes.at(end) == roles)
            ++end;
        if (!roles.isEmpty())
            emit q->dataChanged(q->index(first), q->index(end - 1), roles);
        first = end;
    }
}

void InterfaceModel::Private::awaitAddresses()
{
    qint64 wait = -1;
    for (const Row &row : qAsConst(rows)) {
        const qint64 left = row.waiting.isValid() ? leaseTime - row.waiting.elapsed() : 0;
        if (left > 0 && (wait < 0 || left < wait))
            wait = left;
    }
    if (wait < 0)
        m_wait.stop();
    else
        m_wait.start(int(wait));
}

InterfaceModel::InterfaceModel(QObject *parent)
    : QAbstractListModel(parent),
      d(new Private(this))
{
}

InterfaceModel::~InterfaceModel() = default;

int InterfaceModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : d->rows.size();
}

QVariant InterfaceModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= d->rows.size())
        return QVariant();
    const Values &values = d->rows.at(index.row()).values;
    if (role == Qt::DisplayRole || role == DisplayNameRole)
        return WifiNetworkModel::displayName(values.value(NameRole).toString());
    return values.value(role);
}

QHash<int, QByteArray> InterfaceModel::roleNames() const
{
    return {
        {NameRole, "name"},
        {TypeRole, "type"},
        {TypeTextRole, "typeText"},
        {StateRole, "interfaceState"},
        {StateTextRole, "stateText"},
        {ConnectedRole, "connected"},
        {AvailableRole, "available"},
        {PreferredRole, "preferred"},
        {PriorityRole, "priority"},
        {MacAddressRole, "macAddress"},
        {MtuRole, "mtu"},
        {AddressRole, "address"},
        {PrefixLengthRole, "prefixLength"},
        {NetmaskRole, "netmask"},
        {GatewayRole, "gateway"},
        {AutomaticRole, "automatic"},
        {ParentRole, "parentName"},
        {DisplayNameRole, "displayName"},
    };
}

int InterfaceModel::count() const
{
    return d->rows.size();
}

int InterfaceModel::rowOf(const QString &name) const
{
    const auto it =
        std::find_if(d->rows.cbegin(), d->rows.cend(), [&name](const Row &row) { return row.name == name; });
    return it == d->rows.cend() ? -1 : int(it - d->rows.cbegin());
}

int InterfaceModel::leaseTime() const
{
    return d->leaseTime;
}

void InterfaceModel::setLeaseTime(int milliseconds)
{
    if (milliseconds == d->leaseTime)
        return;
    d->leaseTime = milliseconds;
    d->update();
    emit leaseTimeChanged();
}

void InterfaceModel::setInterfaces(const QList<NetworkInterface> &interfaces, const QString &preferred)
{
    d->interfaces.clear();
    for (const NetworkInterface &networkInterface : interfaces)
        d->interfaces.insert(networkInterface.name(), valuesOf(networkInterface, preferred));
    d->update();
}

void InterfaceModel::setConfiguring(const QString &name, bool configuring)
{
    if (configuring)
        d->configuring.insert(name);
    else
        d->configuring.remove(name);
    d->update();
}

} // namespace morvek
