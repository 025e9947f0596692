// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_STARTING_H
#define MORVEK_STARTING_H

class Report;

// What a program that links the library costs when it does nothing, beside one that links Qt Core and Qt Network only.
void measureStarting(Report *report);
void countStarting(Report *report);

#endif
