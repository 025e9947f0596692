#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# the daemons over a real manager among simulated radios
exec "$(dirname "${BASH_SOURCE[0]}")/../machine/radio/run.sh" --short
