// SPDX-License-Identifier: Apache-2.0
#ifndef NAMESPACES_H
#define NAMESPACES_H

#include <QtCore/QString>

/*! Gives this process a mount namespace of its own; why it cannot, or empty. */
QString enterMountNamespace();
/*! Gives this process a user namespace of its own, in which it may set limits; why it cannot, or empty. */
QString enterUserNamespace();

#endif
