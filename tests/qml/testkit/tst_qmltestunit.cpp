// SPDX-License-Identifier: Apache-2.0
#include <QtQuickTest/quicktest.h>

QUICK_TEST_MAIN(testunit)
