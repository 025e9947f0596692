// SPDX-License-Identifier: Apache-2.0
#include "networklibraryexports.h"

// A program that links the library, and does nothing.
int main(int argc, char *[])
{
    if (argc > 1)
        newNetworkInterfaceService();
    return 0;
}
