// SPDX-License-Identifier: Apache-2.0
import QtQuick 2.15
import Morvek.Network 1.0
import "../controls"

/*! Why a request has failed. That a service was not ready is told until it is. */
Notice {
    property NetworkController controller: null
    property NetworkRequest request: null
    readonly property bool over: request !== null && request.failure === NetworkRequest.NotReady
        && controller.availability === NetworkController.Ready

    text: request && !request.running && !over ? request.sentence : ""
    kind: request && (request.failure === NetworkRequest.Cancelled || request.failure === NetworkRequest.Overtaken)
          ? StateMark.Off : StateMark.Bad
}
