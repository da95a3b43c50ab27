#!/usr/bin/env bash
# Builds a Release vnxparse and library optimised with GCC's profile feedback
# and link-time optimisation, in two stages in the same build directory (the
# profile files are named after the objects, so both stages must build the
# same paths):
#   1. an instrumented build sweeps the repository's own C/C++ files
#      (examples/ and tests/data/) a few times, writing the profile;
#   2. the final build uses that profile to lay out and inline the hot paths.
# Nothing from the corpora it is later timed on goes into the training.
#
# Usage: bench/pgo-build.sh [BUILD_DIR]   (default: build-pgo/)
# Prints the path of the vnxparse it built. `--check` only tells, by its exit
# status, whether the compiler is GCC.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
# The profile options and file layout below are GCC's.
is_gcc() {
  local macros
  macros=$("${CXX:-c++}" -dM -E -x c++ /dev/null 2>/dev/null) || return 1
  grep -q '__GNUC__' <<<"$macros" && ! grep -q '__clang__' <<<"$macros"
}
if [ "${1:-}" = "--check" ]; then
  is_gcc
  exit
fi
if ! is_gcc; then
  echo "pgo-build.sh: needs GCC (${CXX:-c++} is not GCC)" >&2
  exit 1
fi

build=$(realpath -m "${1:-$root/build-pgo}")
profile="$build/profile"
common=(-G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_INTERPROCEDURAL_OPTIMIZATION=ON -DVNX_BUILD_TESTS=OFF -DVNX_BUILD_BENCH=OFF)

rm -rf "$profile"
cmake -S "$root" -B "$build" "${common[@]}" \
  "-DCMAKE_CXX_FLAGS=-fprofile-generate -fprofile-update=single -fprofile-dir=$profile" \
  -DCMAKE_EXE_LINKER_FLAGS=-fprofile-generate -DCMAKE_SHARED_LINKER_FLAGS=-fprofile-generate >/dev/null
cmake --build "$build" --target vnxparse >/dev/null

training=$(mktemp)
trap 'rm -f "$training"' EXIT
find "$root/examples" "$root/tests/data" -type f \( -name '*.h' -o -name '*.hxx' -o -name '*.hpp' \
  -o -name '*.c' -o -name '*.cpp' -o -name '*.cxx' -o -name '*.idl' \) | sort > "$training"
if [ ! -s "$training" ]; then
  echo "pgo-build.sh: no training files under examples/ or tests/data/" >&2
  exit 1
fi
for _ in 1 2 3 4 5; do
  "$build/tools/vnxparse" sweep --files-from "$training" >/dev/null
done

# Functions the training never reached are compiled as usual; say nothing of them.
cmake -S "$root" -B "$build" "${common[@]}" \
  "-DCMAKE_CXX_FLAGS=-fprofile-use -fprofile-dir=$profile -Wno-missing-profile" \
  -DCMAKE_EXE_LINKER_FLAGS= -DCMAKE_SHARED_LINKER_FLAGS= >/dev/null
cmake --build "$build" --target vnxparse >/dev/null
echo "$build/tools/vnxparse"
