#!/usr/bin/env bash
# Builds everything (library, vnxparse, tests, benchmarks) and runs every test.
set -euo pipefail
cd "$(dirname "$0")/.."
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVNX_WERROR=ON
cmake --build build
ctest --test-dir build --output-on-failure -j2
