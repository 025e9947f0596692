// SPDX-License-Identifier: Apache-2.0
CarText {
    color: Theme.faint
    font.pixelSize: Theme.support
}
