#!/usr/bin/env bash
# A primary that falls in the middle of saves, and its standby that takes over, 100 times or as
# often as is said. Of a tree that is built: tests/ado/server/failover.sh [<times>]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../../.."
VALTRINO_FAILOVERS="${1:-100}" exec build/dev/tests/ado_test --gtest_filter='Failover.*'
