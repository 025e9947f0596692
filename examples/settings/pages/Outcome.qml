// SPDX-License-Identifier: Apache-2.0
import QtQuick 2.15
import Morvek.Network 1.0
import "../controls"

/*! Why a request has failed. */
Notice {
    property NetworkRequest request: null

    text: request && !request.running ? request.sentence : ""
    kind: request && (request.failure === NetworkRequest.Cancelled || request.failure === NetworkRequest.Overtaken)
          ? StateMark.Off : StateMark.Bad
}
