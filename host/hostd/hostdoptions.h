// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_HOSTDOPTIONS_H
#define MORVEK_HOSTD_HOSTDOPTIONS_H

#include "candidates.h"
#include "manageroptions.h"
#include "scenario.h"

namespace morvek {

/*! Where the networks come from. */
enum class NetworkSource { Scenario, Kernel, Manager, Recording };

/*! What the program was asked for. */
struct HostdOptions
{
    enum Action { Run, Check, ListScenarios, Tell, Call };

    /*! False when the arguments make no sense; \a error says why. */
    static bool parse(const QStringList &arguments, HostdOptions *options, QString *error);

    /*! What the last one of \a words, the arguments typed so far, may become. */
    static Candidates candidates(const QStringList &words);

    Action action = Run;
    QString text; //!< of Tell: what to write to standard output
    QString scenario;
    QString recording; //!< the file
    QString root;      //!< an absolute path, or empty: as the environment says
    NetworkSource network = NetworkSource::Scenario;
    ManagerOptions manager;
    QVector<Service> without; //!< daemons that are left out
    bool fresh = false;       //!< forgets what former runs left
    bool verbose = false;
    bool hold = false;
    double speed = 1;
    qint64 seed = -1;    //!< -1: the scenario's
    QStringList words;   //!< of Call
    double timeout = 30; //!< of Call, in seconds
};

} // namespace morvek

#endif
