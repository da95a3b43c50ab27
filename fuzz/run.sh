#!/usr/bin/env bash
# Builds the libFuzzer targets into build-fuzz/ and runs each for SECONDS
# (default 60) from seeds taken from examples/ and tests/data/. Exits non-zero
# when any target finds a crash, a leak, a timeout or runs out of memory; the
# reproducer is then under build-fuzz/artifacts/<target>/ and the log under
# build-fuzz/logs/ (VNX_FUZZ_BUILD_DIR chooses another directory). An input
# counts as a hang after VNX_FUZZ_TIMEOUT seconds (30: the slowest inputs
# known, kept as regression tests, take seconds under the sanitizers and are
# not hangs). Needs clang++
# with libFuzzer (Debian: clang, libclang-rt-14-dev).
#
#   fuzz/run.sh [SECONDS]
set -euo pipefail

seconds=${1:-60}
case $seconds in
  '' | *[!0-9]*) echo "usage: fuzz/run.sh [SECONDS]" >&2; exit 2 ;;
esac

root=$(cd "$(dirname "$0")/.." && pwd)
build=${VNX_FUZZ_BUILD_DIR:-$root/build-fuzz}
cxx=${VNX_FUZZ_CXX:-clang++}

cmake -S "$root/fuzz" -B "$build" -G Ninja -DCMAKE_CXX_COMPILER="$cxx" >/dev/null
cmake --build "$build" -j2

# Seeds: every sample file and test data file, copied into a scratch corpus
# per target (generated corpora stay in the build directory, never in git).
seed() {
  local corpus=$1
  mkdir -p "$corpus"
  find "$root/examples" "$root/tests/data" -type f -size -64k -print0 |
    while IFS= read -r -d '' file; do
      cp "$file" "$corpus/seed-$(echo "${file#"$root"/}" | tr '/' '_')"
    done
}

# target max_len: the tokenizer and the pass are linear, the tree target
# builds every input twice and walks it, so it gets shorter inputs.
targets=("tokenizer 65536" "prepro 65536" "tree 32768")

export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=1:detect_stack_use_after_return=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}

failed=()
mkdir -p "$build/logs"
for entry in "${targets[@]}"; do
  read -r target maxlen <<<"$entry"
  corpus=$build/corpus/$target
  artifacts=$build/artifacts/$target
  log=$build/logs/$target.log
  seed "$corpus"
  mkdir -p "$artifacts"
  echo "=== fuzz_$target: ${seconds}s, max_len $maxlen ==="
  status=0
  "$build/fuzz_$target" "$corpus" \
    -max_total_time="$seconds" -timeout="${VNX_FUZZ_TIMEOUT:-30}" -rss_limit_mb=2048 -max_len="$maxlen" \
    -dict="$root/fuzz/cxx.dict" -artifact_prefix="$artifacts/" -print_final_stats=1 \
    >"$log" 2>&1 || status=$?
  grep -E '^stat::(number_of_executed_units|average_exec_per_sec|peak_rss_mb)' "$log" || true
  if [ "$status" -ne 0 ]; then
    echo "fuzz_$target FAILED (exit $status); last lines of $log:"
    tail -n 60 "$log"
    failed+=("$target")
  fi
done

if [ ${#failed[@]} -gt 0 ]; then
  echo "fuzzing found problems in: ${failed[*]} (reproducers in $build/artifacts/)"
  exit 1
fi
echo "fuzzing: no crash, leak or timeout"
