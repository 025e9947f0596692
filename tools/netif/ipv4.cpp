// SPDX-License-Identifier: Apache-2.0
#include "ipv4.h"

#include <ipv4form.h>

namespace morvek {

namespace {

bool fail(QString *error, const QString &sentence)
{
    *error = sentence;
    return false;
}

const QString PrefixRange = QStringLiteral("the prefix length is a number from 1 to 31");

/*! The fault of \a text in a form, which passes over the blanks around it; on a command line they are a mistake. */
Ipv4Form::Fault strictly(Ipv4Form::Fault fault, const QString &text)
{
    return text == text.trimmed() ? fault : Ipv4Form::NotAnAddress;
}

/*! Reads a netmask, or the length of one. */
Ipv4Form::Fault readAnyMask(const QString &text, int *length)
{
    Ipv4Form form;
    form.setNetmask(text);
    *length = form.prefixLength();
    return strictly(form.netmaskFault(), text);
}

bool readPrefix(const QString &text, int *length)
{
    return !text.contains(QLatin1Char('.')) && readAnyMask(text, length) == Ipv4Form::NoFault;
}

bool readMask(const ManualAddress &typed, int *length, QString *error)
{
    if (typed.netmask.isEmpty() == typed.prefix.isEmpty())
        return fail(
            error,
            typed.prefix.isEmpty()
                ? QStringLiteral("the netmask is missing: add it to the address, like /24, or --netmask 255.255.255.0")
                : QStringLiteral("--netmask and --prefix say the same: give only one of them"));

    if (typed.netmask.isEmpty())
        return readPrefix(typed.prefix, length)
            || fail(error, QStringLiteral("--prefix \"%1\" does not fit: %2").arg(typed.prefix, PrefixRange));
    const Ipv4Form::Fault fault = readAnyMask(typed.netmask, length);
    if (fault == Ipv4Form::NotAnAddress || !typed.netmask.contains(QLatin1Char('.')))
        return fail(error,
                    QStringLiteral("--netmask \"%1\" is no netmask: write it like 255.255.255.0, or use --prefix")
                        .arg(typed.netmask));
    if (typed.netmask == QLatin1String("0.0.0.0") || typed.netmask == QLatin1String("255.255.255.255"))
        return fail(error, QStringLiteral("--netmask \"%1\" does not fit: %2").arg(typed.netmask, PrefixRange));
    if (fault != Ipv4Form::NoFault)
        return fail(error,
                    QStringLiteral("--netmask \"%1\" is no netmask: its ones must come before its zeros, like "
                                   "255.255.255.0")
                        .arg(typed.netmask));
    return true;
}

/*! Reads the mask of an address that has it behind itself; another one must be the same. */
bool readMaskBehind(const QString &behind, const ManualAddress &typed, int *length, QString *error)
{
    if (!readPrefix(behind, length))
        return fail(error, QStringLiteral("--address \"%1\" does not fit: %2").arg(typed.address, PrefixRange));
    int other = *length;
    if ((!typed.netmask.isEmpty() || !typed.prefix.isEmpty()) && !readMask(typed, &other, error))
        return false;
    if (other == *length)
        return true;
    const QString option = typed.prefix.isEmpty() ? QStringLiteral("--netmask ") + typed.netmask
                                                  : QStringLiteral("--prefix ") + typed.prefix;
    return fail(error,
                QStringLiteral("--address %1 and %2 contradict each other: leave %2 out, or \"/%3\"")
                    .arg(typed.address, option, behind));
}

bool checkHost(const QString &option, const QString &text, Ipv4Form::Fault fault, QString *error)
{
    if (text.isEmpty())
        return fail(error, QStringLiteral("the %1 is missing: add --%1 with an address like 192.168.0.1").arg(option));
    if (strictly(fault, text) == Ipv4Form::NotAnAddress)
        return fail(error,
                    QStringLiteral("--%1 \"%2\" is no IPv4 address: write it like 192.168.0.1").arg(option, text));
    if (fault == Ipv4Form::NotAHost)
        return fail(error,
                    QStringLiteral("--%1 %2 is no address of a machine in a network: use one like 192.168.0.1")
                        .arg(option, text));
    return true;
}

QString networkText(const Ipv4Form &form)
{
    const quint32 mask = ~0u << (32 - form.prefixLength());
    return QStringLiteral("%1/%2")
        .arg(QHostAddress(QHostAddress(form.address()).toIPv4Address() & mask).toString())
        .arg(form.prefixLength());
}

bool checkTogether(const Ipv4Form &form, QString *error)
{
    const QString network = networkText(form);
    const QString outside = QStringLiteral("--%1 %2 does not fit: the first and the last address of %3 stand for the "
                                           "network: use another");
    if (form.addressFault() != Ipv4Form::NoFault)
        return fail(error, outside.arg(QStringLiteral("address"), form.address(), network));
    if (form.gatewayFault() == Ipv4Form::NotInNetwork)
        return fail(error,
                    QStringLiteral("--gateway %1 is outside of the network %2: use an address of that network")
                        .arg(form.gateway(), network));
    if (form.gatewayFault() == Ipv4Form::OwnAddress)
        return fail(
            error, QStringLiteral("--gateway %1 is the interface's own address: use the router's").arg(form.gateway()));
    if (form.gatewayFault() != Ipv4Form::NoFault)
        return fail(error, outside.arg(QStringLiteral("gateway"), form.gateway(), network));
    return true;
}

} // namespace

bool manualConfiguration(const ManualAddress &typed, NetworkInterfaceConfig *config, QString *error)
{
    const int slash = typed.address.indexOf(QLatin1Char('/'));
    Ipv4Form form; // which tells what is wrong with each by itself as long as it has no netmask
    form.setAddress(typed.address.left(slash));
    form.setGateway(typed.gateway);
    int length = 0;
    if (!checkHost(QStringLiteral("address"), form.address(), form.addressFault(), error)
        || !(slash < 0 ? readMask(typed, &length, error)
                       : readMaskBehind(typed.address.mid(slash + 1), typed, &length, error))
        || !checkHost(QStringLiteral("gateway"), form.gateway(), form.gatewayFault(), error))
        return false;
    form.setNetmask(QString::number(length));
    if (!checkTogether(form, error))
        return false;
    *config = form.configuration();
    return true;
}

} // namespace morvek
