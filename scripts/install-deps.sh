#!/bin/sh
# Installs the Debian packages the build and the tests need, plus any named on the
# command line; silent when everything is already there. Safe to run again.
set -eu

packages="cmake g++ make pkgconf libgtest-dev libbenchmark-dev nlohmann-json3-dev libsndfile1-dev python3-olefile $*"
missing=""
for p in $packages; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "ok installed" || missing="$missing $p"
done
[ -z "$missing" ] && exit 0

if [ "$(id -u)" -eq 0 ]; then
  as_root=""
elif command -v sudo >/dev/null 2>&1; then
  as_root="sudo"
else
  echo "install-deps: missing packages:$missing (run as root to install them)" >&2
  exit 1
fi
echo "install-deps: installing$missing" >&2
$as_root apt-get update -qq
# shellcheck disable=SC2086
$as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $missing >/dev/null
