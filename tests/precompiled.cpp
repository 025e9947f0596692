// SPDX-License-Identifier: Apache-2.0
// Stands for the headers that are compiled with it.
