// SPDX-License-Identifier: Apache-2.0
import QtQuick 2.15
import Morvek.Network 1.0
import "../controls"

/*! Says that a service is not there. */
Notice {
    property NetworkController controller: null

    text: controller ? controller.availabilityText : ""
    kind: controller && controller.availability === NetworkController.Gone ? StateMark.Bad : StateMark.Busy
}
