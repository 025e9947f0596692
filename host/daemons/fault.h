// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_HOSTD_FAULT_H
#define MORVEK_HOSTD_FAULT_H

#include "attributes.h"
#include "service.h"

#include <optional>

namespace morvek {

/*! What happens to a request's reply. */
struct Fault
{
    enum Kind { Refuse, NoReply, Late, Double, Die, Answer };

    Kind kind = Refuse;
    QString word;                   //!< by which scenarios know it
    std::optional<Service> service; //!< none: requests to any daemon
    QString message;                //!< empty: any
    QString interface;              //!< empty: any
    QString ssid;                   //!< empty: any
    int skip = 0;                   //!< so many requests that fit pass first
    int times = -1;                 //!< -1: always
    int code = 0;
    QString text;
    Attributes reply; //!< of Answer: what the reply carries, beside the request's "id" and "peer"
    int delay = 0;
    bool performs = false; //!< of NoReply: the request is carried out all the same
    int backAfter = -1;    //!< of Die; -1: never
};

} // namespace morvek

#endif
