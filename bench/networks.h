// SPDX-License-Identifier: Apache-2.0
#ifndef MORVEK_NETWORKS_H
#define MORVEK_NETWORKS_H

class Report;

/*! What the kit's model of networks costs and tells when all of them drift, beside the scan's decoding. */
void countNetworks(Report *report);

#endif
