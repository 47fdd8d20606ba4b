#!/usr/bin/env bash
# Installs, only when missing, what the Release benchmark build alone needs
# beyond scripts/setup.sh: pugixml, the peer DOM library it measures against.
# The test suite never needs it.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
"$top/scripts/setup.sh"
dpkg-query -W -f='${Status}' libpugixml-dev 2>/dev/null | grep -q 'install ok installed' && exit 0
sudo=""
[ "$(id -u)" -ne 0 ] && sudo="sudo"
echo "setup-bench: installing libpugixml-dev"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends libpugixml-dev
