// SPDX-License-Identifier: Apache-2.0
#include "wifinetworkmodel.h"

#include "wifinetworkorder_p.h"
#include "wifitexts_p.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

namespace morvek {

namespace {

/*! What a row tells, beside the network's name. */
struct Told
{
    bool isJoinable() const { return security.isOpen() || security.takesPasskey(); }

    int level = 0;
    int accessPoints = 0;
    NetworkSecurity security;
    bool openTwin = false;
    bool inUse = false;
    bool joining = false;
};

/*! A network, as the last scan that found it has found it. */
struct Network
{
    explicit Network(const QString &name)
        : ssid(name)
    {
    }

    static constexpr int Never = -1;

    const QString ssid;
    int scan = Never;
    int accessPoints = 0;
    NetworkSecurity protection; //!< that of all its access points that are protected; or of all, when none is
    int level = 0;              //!< that of the strongest of these
    bool hasOpen = false;
    Told told;
    int place = 0; //!< among the rows, when they are moved
};

using Networks = std::vector<std::unique_ptr<Network>>;

int barsOf(int level)
{
    const int steps[] = {-85, -75, -65, -55};
    return level == 0
        ? 0
        : int(std::count_if(std::begin(steps), std::end(steps), [level](int step) { return level >= step; }));
}

unsigned bitOf(int role)
{
    return 1U << unsigned(role - WifiNetworkModel::SsidRole);
}

/*! The bits of the roles in which \a before and \a after differ. */
unsigned difference(const Told &before, const Told &after)
{
    unsigned roles = 0;
    const auto compare = [&roles](int role, auto one, auto other) { roles |= one == other ? 0 : bitOf(role); };
    compare(WifiNetworkModel::LevelRole, before.level, after.level);
    compare(WifiNetworkModel::BarsRole, barsOf(before.level), barsOf(after.level));
    if (before.security != after.security) {
        compare(WifiNetworkModel::SecurityRole, before.security.name(), after.security.name());
        compare(WifiNetworkModel::ProtectedRole, before.security.isOpen(), after.security.isOpen());
        compare(WifiNetworkModel::JoinableRole, before.isJoinable(), after.isJoinable());
        compare(WifiNetworkModel::NeedsPasskeyRole, before.security.takesPasskey(), after.security.takesPasskey());
    }
    compare(WifiNetworkModel::InUseRole, before.inUse, after.inUse);
    compare(WifiNetworkModel::JoiningRole, before.joining, after.joining);
    compare(WifiNetworkModel::OpenTwinRole, before.openTwin, after.openTwin);
    compare(WifiNetworkModel::AccessPointsRole, before.accessPoints, after.accessPoints);
    return roles;
}

QVector<int> rolesOf(unsigned bits)
{
    QVector<int> roles;
    for (int role = WifiNetworkModel::SsidRole; role <= WifiNetworkModel::AccessPointsRole; ++role) {
        if (bits & bitOf(role))
            roles.append(role);
    }
    return roles;
}

/*! What can be shown of \a character, which is no half of a pair. */
QChar shown(QChar character)
{
    const ushort code = character.unicode();
    const auto isWithin = [code](ushort first, ushort last) { return code >= first && code <= last; };
    if (code < 0x20)
        return QChar(0x2400 + code); // the picture of its name
    if (code == 0x7f)
        return QChar(0x2421);
    const bool isControl = isWithin(0x80, 0x9f);
    const bool breaksLine = isWithin(0x2028, 0x2029);
    const bool turnsLine = code == 0x061c || isWithin(0x200e, 0x200f) || isWithin(0x202a, 0x202e);
    // Names that differ by these alone would look alike. What joins letters (U+200C, U+200D) is writing.
    const bool isInvisible = code == 0x00ad || code == 0x180e || code == 0x200b || isWithin(0x2060, 0x206f)
        || code == 0xfeff || isWithin(0xfff9, 0xfffb);
    return isControl || breaksLine || turnsLine || isInvisible ? QChar(QChar::ReplacementCharacter) : character;
}

} // namespace

/*!
 * What it is told is kept first, and taken over in update(). A slot that tells something in between does not disturb
 * the change of rows that it was called for: that is finished, and what is new is taken over after it.
 */
class WifiNetworkModel::Private
{
public:
    explicit Private(WifiNetworkModel *model)
        : q(model)
    {
    }

    void update();
    int rowOf(const Network *network) const;

    WifiNetworkModel *const q;
    QVector<Found> found; //!< while it is new
    bool isFoundNew = false;
    QString inUse;
    NetworkSecurity inUseSecurity;
    QString joining;
    bool isHeld = false;

    Networks rows;
    QHash<QString, Network *> networks; //!< those that have a row, and those that are to have one

private:
    Network *network(const QString &ssid);
    void takeFound();
    bool isGone(const Network &network) const { return network.scan != m_scan && network.ssid != inUse; }
    void forget(Networks *some, Networks::iterator first, Networks::iterator last);
    void forgetWaiting();

    Told toldOf(const Network &network) const;
    bool comesBefore(const Network &one, const Network &other) const;
    QVector<Network *> settledRows() const;

    void removeRows();
    void moveRows();
    void insertRows();
    void tellRows();

    Networks m_waiting; //!< those that are to have a row
    int m_scan = 0;
    bool m_isUpdating = false;
    bool m_isOutdated = false;
};

void WifiNetworkModel::Private::update()
{
    m_isOutdated = true;
    if (m_isUpdating)
        return;
    m_isUpdating = true;
    while (std::exchange(m_isOutdated, false)) {
        const size_t count = rows.size();
        if (std::exchange(isFoundNew, false))
            takeFound();
        if (!inUse.isEmpty())
            network(inUse);
        forgetWaiting();
        if (!isHeld) {
            removeRows();
            moveRows();
            insertRows();
        }
        tellRows();
        if (rows.size() != count)
            Q_EMIT q->countChanged();
    }
    m_isUpdating = false;
}

int WifiNetworkModel::Private::rowOf(const Network *network) const
{
    const auto row =
        std::find_if(rows.begin(), rows.end(), [network](const auto &one) { return one.get() == network; });
    return row == rows.end() ? -1 : int(row - rows.begin());
}

Network *WifiNetworkModel::Private::network(const QString &ssid)
{
    Network *&network = networks[ssid];
    if (!network) {
        m_waiting.push_back(std::make_unique<Network>(ssid));
        network = m_waiting.back().get();
    }
    return network;
}

void WifiNetworkModel::Private::takeFound()
{
    ++m_scan;
    const QVector<Found> accessPoints = std::exchange(found, {});
    for (const Found &accessPoint : accessPoints) {
        if (accessPoint.ssid.isEmpty())
            continue;
        Network *one = network(accessPoint.ssid);
        if (one->scan != m_scan) {
            one->scan = m_scan;
            one->level = 0;
            one->accessPoints = 0;
            one->protection = NetworkSecurity(QStringList());
            one->hasOpen = false;
        }
        ++one->accessPoints;
        const bool isOpen = accessPoint.security.isOpen();
        one->hasOpen = one->hasOpen || isOpen;
        if (isOpen && !one->protection.isOpen())
            continue;
        if (!isOpen && one->protection.isOpen()) { // what is open does not count any more
            one->level = 0;
            one->protection = accessPoint.security;
        }
        if (WifiNetworkOrder::isStronger(accessPoint.level, one->level))
            one->level = accessPoint.level;
        one->protection = one->protection | accessPoint.security;
    }
}

void WifiNetworkModel::Private::forget(Networks *some, Networks::iterator first, Networks::iterator last)
{
    for (auto one = first; one != last; ++one)
        networks.remove((*one)->ssid);
    some->erase(first, last);
}

void WifiNetworkModel::Private::forgetWaiting()
{
    const auto gone =
        std::partition(m_waiting.begin(), m_waiting.end(), [this](const auto &one) { return !isGone(*one); });
    forget(&m_waiting, gone, m_waiting.end());
}

Told WifiNetworkModel::Private::toldOf(const Network &network) const
{
    Told told;
    told.inUse = network.ssid == inUse;
    told.joining = network.ssid == joining;
    if (network.scan == Network::Never) {
        told.security = told.inUse ? inUseSecurity : network.told.security;
        return told;
    }
    if (network.scan == m_scan) {
        told.level = network.level;
        told.accessPoints = network.accessPoints;
    }
    // What the station is connected to is of this network, too, but little may be known of it.
    const bool connectsOpenly = told.inUse && inUseSecurity.isOpen();
    told.security = network.protection;
    if (told.inUse && inUseSecurity.isKnown())
        told.security = told.security | inUseSecurity;
    told.openTwin = (network.hasOpen || connectsOpenly) && !told.security.isOpen();
    return told;
}

bool WifiNetworkModel::Private::comesBefore(const Network &one, const Network &other) const
{
    if (one.ssid == inUse || other.ssid == inUse)
        return one.ssid == inUse;
    return WifiNetworkOrder::isStronger(one.level, other.level);
}

QVector<Network *> WifiNetworkModel::Private::settledRows() const
{
    QVector<Network *> order;
    QVector<Network *> others;
    QVector<int> levels;
    for (const auto &row : rows) {
        if (row->ssid == inUse) {
            order.append(row.get());
        } else {
            others.append(row.get());
            levels.append(row->level);
        }
    }
    const QVector<int> settled = WifiNetworkOrder::settled(levels);
    for (const int row : settled)
        order.append(others[row]);
    return order;
}

void WifiNetworkModel::Private::removeRows()
{
    for (int last = int(rows.size()) - 1; last >= 0; --last) {
        int first = last + 1;
        while (first > 0 && isGone(*rows[size_t(first) - 1]))
            --first;
        if (first > last)
            continue;
        q->beginRemoveRows({}, first, last);
        forget(&rows, rows.begin() + first, rows.begin() + last + 1);
        q->endRemoveRows();
        last = first;
    }
}

void WifiNetworkModel::Private::moveRows()
{
    const QVector<Network *> target = settledRows();
    for (int place = 0; place < target.size(); ++place)
        target[place]->place = place;
    QVector<int> places;
    for (const auto &row : rows)
        places.append(row->place);
    const QVector<bool> stays = WifiNetworkOrder::staying(places);
    QVector<bool> staysAt(places.size());
    for (int row = 0; row < places.size(); ++row)
        staysAt[places[row]] = stays[row];

    int next = 0;
    for (int place = 0; place < target.size(); place = next) {
        next = place + 1;
        if (staysAt[place])
            continue;
        const int first = rowOf(target[place]);
        const int to = place == 0 ? 0 : rowOf(target[place - 1]) + 1;
        int end = first + 1;
        // Those that follow it, and are to follow it, go along.
        while (next < target.size() && end < target.size() && rows[size_t(end)].get() == target[next]) {
            ++next;
            ++end;
        }
        q->beginMoveRows({}, first, end - 1, {}, to);
        if (to < first)
            std::rotate(rows.begin() + to, rows.begin() + first, rows.begin() + end);
        else
            std::rotate(rows.begin() + first, rows.begin() + end, rows.begin() + to);
        q->endMoveRows();
    }
}

void WifiNetworkModel::Private::insertRows()
{
    std::sort(m_waiting.begin(), m_waiting.end(), [this](const auto &one, const auto &other) {
        return comesBefore(*one, *other) || (!comesBefore(*other, *one) && one->ssid < other->ssid);
    });
    size_t row = 0;
    for (auto first = m_waiting.begin(); first != m_waiting.end();) {
        while (row < rows.size() && !comesBefore(**first, *rows[row]))
            ++row;
        auto last = first;
        while (last != m_waiting.end() && (row == rows.size() || comesBefore(**last, *rows[row]))) {
            (*last)->told = toldOf(**last);
            ++last;
        }
        const auto count = size_t(last - first);
        q->beginInsertRows({}, int(row), int(row + count) - 1);
        rows.insert(rows.begin() + int(row), std::make_move_iterator(first), std::make_move_iterator(last));
        q->endInsertRows();
        row += count;
        first = last;
    }
    m_waiting.clear();
}

void WifiNetworkModel::Private::tellRows()
{
    QVector<unsigned> changes;
    for (const auto &row : rows) {
        const Told told = toldOf(*row);
        changes.append(difference(row->told, told));
        row->told = told;
    }
    int next = 0;
    for (int first = 0; first < changes.size(); first = next) {
        for (next = first + 1; next < changes.size() && changes[next] == changes[first];)
            ++next;
        if (changes[first] != 0)
            Q_EMIT q->dataChanged(q->index(first), q->index(next - 1), rolesOf(changes[first]));
    }
}

WifiNetworkModel::WifiNetworkModel(QObject *parent)
    : QAbstractListModel(parent),
      d(new Private(this))
{
}

WifiNetworkModel::~WifiNetworkModel() = default;

int WifiNetworkModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : count();
}

QVariant WifiNetworkModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return QVariant();
    const Network &network = *d->rows[size_t(index.row())];
    switch (role) {
    case SsidRole:
        return network.ssid;
    case Qt::DisplayRole:
    case DisplayNameRole:
        return displayName(network.ssid);
    case LevelRole:
        return network.told.level;
    case BarsRole:
        return barsOf(network.told.level);
    case SecurityRole:
        return network.told.security.name();
    case ProtectedRole:
        return !network.told.security.isOpen();
    case JoinableRole:
        return network.told.isJoinable() && isReadable(network.ssid);
    case NeedsPasskeyRole:
        return network.told.security.takesPasskey();
    case InUseRole:
        return network.told.inUse;
    case JoiningRole:
        return network.told.joining;
    case OpenTwinRole:
        return network.told.openTwin;
    case AccessPointsRole:
        return network.told.accessPoints;
    default:
        return QVariant();
    }
}

QHash<int, QByteArray> WifiNetworkModel::roleNames() const
{
    return {{SsidRole, "ssid"},         {DisplayNameRole, "displayName"},   {LevelRole, "level"},
            {BarsRole, "bars"},         {SecurityRole, "security"},         {ProtectedRole, "isProtected"},
            {JoinableRole, "joinable"}, {NeedsPasskeyRole, "needsPasskey"}, {InUseRole, "inUse"},
            {JoiningRole, "joining"},   {OpenTwinRole, "openTwin"},         {AccessPointsRole, "accessPoints"}};
}

int WifiNetworkModel::count() const
{
    return int(d->rows.size());
}

int WifiNetworkModel::rowOf(const QString &ssid) const
{
    return d->rowOf(d->networks.value(ssid));
}

bool WifiNetworkModel::isHeld() const
{
    return d->isHeld;
}

void WifiNetworkModel::setHeld(bool held)
{
    if (d->isHeld == held)
        return;
    d->isHeld = held;
    d->update();
    Q_EMIT heldChanged();
}

void WifiNetworkModel::setFound(const QVector<Found> &found)
{
    d->found = found;
    d->isFoundNew = true;
    d->update();
}

void WifiNetworkModel::setInUse(const QString &ssid, const NetworkSecurity &security)
{
    d->inUse = ssid;
    d->inUseSecurity = security;
    d->update();
}

void WifiNetworkModel::setJoining(const QString &ssid)
{
    d->joining = ssid;
    d->update();
}

QString WifiNetworkModel::displayName(const QString &name)
{
    if (name.isEmpty())
        return QString();
    QString text = name;
    for (int i = 0; i < text.size(); ++i) {
        if (text.at(i).isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate())
            ++i;
        else
            text[i] = text.at(i).isSurrogate() ? QChar(QChar::ReplacementCharacter) : shown(text.at(i));
    }
    return QChar(0x2068) + text + QChar(0x2069);
}

} // namespace morvek
