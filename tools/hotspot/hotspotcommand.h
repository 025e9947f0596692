// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOTSPOTCOMMAND_H
#define MORVEK_HOTSPOTCOMMAND_H

#include "librarylog.h"
#include "servicecommand.h"

#include <asynchotspotconfigoperation.h>
#include <hotspotservice.h>
#include <networklibraryexports.h>

#include <functional>
#include <optional>

namespace morvek {

/*! How long, in milliseconds, is waited for an answer of the tethering daemon. */
constexpr int AnswerTime = 5000;

/*! A command that needs the hotspot service. */
class HotspotCommand : public CommandWith<HotSpotService, newHotSpotService, deleteHotSpotService>
{
    Q_OBJECT

public:
    explicit HotspotCommand(const CommandLine &line);

protected:
    using Reader = std::function<void(const WifiHotspot &profile)>;
    using Complaint = std::function<void(const QString &sentence)>;

    /*! Reads the profile for \a reader. Otherwise the command fails with a sentence that begins with \a failure. */
    void fetch(const QString &failure, const Reader &reader);
    /*! The same without an end: \a complaint is called with that sentence, and any time is waited for the answer. */
    void fetchAtLeisure(const QString &failure, const Reader &reader, const Complaint &complaint);
    /*! From now on, and for AnswerTime, an answer is waited for; else \a overdue is said. */
    void awaitAnswer(const QString &overdue);
    /*! \a failure with what is known of \a error, which is to be told now. */
    QString sentence(const QString &failure, const AsyncOperationError &error) const;

private:
    void hear(const QString &line);

    std::optional<LibraryLog> m_log;
    QString m_refusal; //!< why, as far as the library hands it on
    std::unique_ptr<AsyncHotspotConfigOperation> m_fetch;
};

} // namespace morvek

#endif
