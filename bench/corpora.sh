#!/usr/bin/env bash
# Installs, when missing, Debian packages that ship real C++ headers, and
# writes one file list per corpus under bench/corpora/ (nothing from the
# packages is copied into the repository).
set -euo pipefail
cd "$(dirname "$0")"
mkdir -p corpora

install_if_missing() {
  local pkg=$1
  if ! dpkg -s "$pkg" >/dev/null 2>&1; then
    DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "$pkg"
  fi
}

install_if_missing libocct-foundation-dev
find /usr/include/opencascade -type f \( -name '*.hxx' -o -name '*.lxx' -o -name '*.h' \) | sort \
  > corpora/occt-foundation.list
wc -l corpora/*.list
