#!/usr/bin/env bash
# Installs, when missing, Debian packages that ship real C++ headers and IDL
# files, and writes one file list per corpus under bench/corpora/ (git-ignored;
# nothing from the packages is copied into the repository):
#
#   occt-foundation.list      Open CASCADE foundation classes (.hxx .lxx .h)
#   occt-modeling-data.list   Open CASCADE modeling data
#   occt-modeling-algorithms.list
#   mingw-w64.list            Windows and COM headers and IDL (mingw-w64-common)
#   qtbase5.list              Qt 5 class headers with their export macros (.h)
#   wine.list                 Wine's interface definitions and headers (.idl .h)
#
# libwine-dev is not installed: its .deb is fetched with `apt-get download`
# and unpacked with `dpkg -x` under bench/corpora/libwine-dev/.
#
# Usage: bench/corpora.sh [--check]
#   --check  installs nothing; exits 1 when a list is missing or names a file
#            that no longer exists.
# Needs root and the Debian mirrors for the installs; a corpus whose package is
# already there costs nothing.
set -euo pipefail
cd "$(dirname "$0")"
mkdir -p corpora

corpora=(occt-foundation occt-modeling-data occt-modeling-algorithms mingw-w64 qtbase5 wine)

if [ "${1:-}" = "--check" ]; then
  for c in "${corpora[@]}"; do
    list=corpora/$c.list
    [ -s "$list" ] || { echo "missing: $list" >&2; exit 1; }
    first=$(head -n 1 "$list")
    [ -f "$first" ] || { echo "stale: $list ($first)" >&2; exit 1; }
  done
  exit 0
fi

export DEBIAN_FRONTEND=noninteractive
updated=0
apt_update_once() {
  if [ $updated -eq 0 ]; then
    apt-get update -q >/dev/null
    updated=1
  fi
}

install_if_missing() {
  local missing=()
  for pkg in "$@"; do
    dpkg -s "$pkg" >/dev/null 2>&1 || missing+=("$pkg")
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  # A machine whose package lists are old or empty needs one update first.
  if ! apt-get install -y -q --no-install-recommends "${missing[@]}" >/dev/null; then
    apt_update_once
    apt-get install -y -q --no-install-recommends "${missing[@]}" >/dev/null
  fi
}

# Writes the sorted list of the regular files under DIR whose names match the
# find expression that follows, and fails when it is empty.
write_list() {
  local name=$1 dir=$2
  shift 2
  find "$dir" -type f \( "$@" \) | LC_ALL=C sort > "corpora/$name.list"
  [ -s "corpora/$name.list" ] || { echo "corpora.sh: no file for $name under $dir" >&2; exit 1; }
}

install_if_missing libocct-foundation-dev libocct-modeling-data-dev libocct-modeling-algorithms-dev \
  mingw-w64-common qtbase5-dev

# Open CASCADE puts every toolkit in one directory: a toolkit's files are the
# ones its -dev package owns.
occt_list() {
  local name=$1 pkg=$2
  dpkg -L "$pkg" | grep -E '^/usr/include/opencascade/.*\.(hxx|lxx|h)$' | while read -r f; do
    [ -f "$f" ] && echo "$f"
  done | LC_ALL=C sort > "corpora/$name.list"
  [ -s "corpora/$name.list" ] || { echo "corpora.sh: no file for $name" >&2; exit 1; }
}
occt_list occt-foundation libocct-foundation-dev
occt_list occt-modeling-data libocct-modeling-data-dev
occt_list occt-modeling-algorithms libocct-modeling-algorithms-dev

write_list mingw-w64 /usr/share/mingw-w64/include -name '*.h' -o -name '*.idl'

qt_include=$(dirname "$(dirname "$(dpkg -L qtbase5-dev | grep -m1 '/qt5/QtCore/qglobal.h$')")")
write_list qtbase5 "$qt_include" -name '*.h'

wine_root=$PWD/corpora/libwine-dev
if [ ! -d "$wine_root/usr/include/wine" ]; then
  tmp=$(mktemp -d)
  trap 'rm -rf "$tmp"' EXIT
  if ! (cd "$tmp" && apt-get download -q libwine-dev >/dev/null 2>&1); then
    apt_update_once
    (cd "$tmp" && apt-get download -q libwine-dev >/dev/null)
  fi
  rm -rf "$wine_root"
  mkdir -p "$wine_root"
  dpkg -x "$tmp"/libwine-dev_*.deb "$wine_root"
fi
write_list wine "$wine_root/usr/include/wine" -name '*.idl' -o -name '*.h'

for c in "${corpora[@]}"; do
  printf '%-28s %6d files %8d KiB\n' "$c" "$(wc -l < "corpora/$c.list")" \
    "$(tr '\n' '\0' < "corpora/$c.list" | du -ck --apparent-size --files0-from=- | tail -n 1 | cut -f1)"
done
