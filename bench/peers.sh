#!/usr/bin/env bash
# Times, over the same file lists and in one run, vnxparse sweep (preprocessing
# plus tree building of every file), Universal Ctags (a tag parser that does
# far less, the peer to beat) and a plain read of every file (the floor), and
# prints per corpus the median wall time of each over RUNS runs, the MB/s and
# the ratio ctags / vnxparse, as a Markdown table.
#
# Usage: bench/peers.sh [LIST]...   (default: every bench/corpora/*.list)
# Environment: RUNS (default 5); VNXPARSE, the vnxparse to time (default: a
# Release build made in build-peers/, profile-guided with bench/pgo-build.sh
# when the compiler is GCC, unless PGO=0); CTAGS (default: ctags).
#
# ctags runs as `ctags --language-force=C++ -L LIST -f -` with its output
# thrown away: forcing the language keeps .hxx, .lxx and .idl files in, and
# `-f /dev/null` makes this ctags stop at once, timing nothing.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
runs=${RUNS:-5}
ctags=${CTAGS:-ctags}

if ! command -v "$ctags" >/dev/null; then
  DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends universal-ctags >/dev/null
fi
if ! "$ctags" --version 2>/dev/null | grep -q "Universal Ctags"; then
  echo "peers.sh: $ctags is not Universal Ctags" >&2
  exit 1
fi

build_kind="Release"
if [ -z "${VNXPARSE:-}" ]; then
  if [ "${PGO:-1}" != 0 ] && "$root/bench/pgo-build.sh" --check; then
    VNXPARSE=$("$root/bench/pgo-build.sh" "$root/build-peers")
    build_kind="Release, profile-guided"
  else
    cmake -S "$root" -B "$root/build-peers" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVNX_BUILD_TESTS=OFF \
      -DVNX_BUILD_BENCH=OFF -DCMAKE_CXX_FLAGS= -DCMAKE_EXE_LINKER_FLAGS= -DCMAKE_SHARED_LINKER_FLAGS= >/dev/null
    cmake --build "$root/build-peers" --target vnxparse >/dev/null
    VNXPARSE=$root/build-peers/tools/vnxparse
  fi
else
  build_kind="given"
fi

lists=("$@")
if [ ${#lists[@]} -eq 0 ]; then
  "$root/bench/corpora.sh" --check 2>/dev/null || "$root/bench/corpora.sh" >/dev/null
  lists=("$root"/bench/corpora/*.list)
fi

# The clock is read without starting a process (bash 5's EPOCHREALTIME, in
# microseconds): a `date` run on each side of the command would add a few
# milliseconds to every sample, which is a tenth of the smaller corpora's
# times, for both tools alike.
now_us() {
  if [ -n "${EPOCHREALTIME:-}" ]; then
    now=${EPOCHREALTIME//[!0-9]/}
  else
    now=$(($(date +%s%N) / 1000))
  fi
}

# Median of the numbers given, one per argument.
median() {
  printf '%s\n' "$@" | sort -n |
    awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'
}

# Runs the command RUNS times after one warm-up run and prints the median wall
# time in milliseconds. The command's failure stops the script.
time_ms() {
  "$@" >/dev/null
  local samples=() start end
  for ((i = 0; i < runs; ++i)); do
    now_us
    start=$now
    "$@" >/dev/null
    now_us
    end=$now
    samples+=("$(awk -v us=$((end - start)) 'BEGIN { printf "%.1f", us / 1000 }')")
  done
  median "${samples[@]}"
}

read_all() { tr '\n' '\0' < "$1" | xargs -0 cat > /dev/null; }
run_ctags() { "$ctags" --language-force=C++ -L "$1" -f - > /dev/null; }
run_vnxparse() { "$VNXPARSE" sweep --files-from "$1" > /dev/null; }

mbps() { awk -v b="$1" -v ms="$2" 'BEGIN { printf "%.1f", (ms > 0 ? b / 1e6 / (ms / 1000) : 0) }'; }

cpu=$(grep -m1 'model name' /proc/cpuinfo | cut -d: -f2 | sed 's/^ *//')
memory=$(awk '/MemTotal/ { printf "%.0f GiB", $2 / 1048576 }' /proc/meminfo)
commit=$(git -C "$root" rev-parse --short HEAD 2>/dev/null || echo '?')
echo "Machine: ${cpu:-unknown CPU}, $(nproc) cores, $memory, $(. /etc/os-release && echo "$PRETTY_NAME");" \
  "$("$ctags" --version | head -n 1 | cut -d, -f1); vnxparse $commit ($build_kind); median of $runs runs," \
  "$(date -u +%Y-%m-%d), load average $(cut -d' ' -f1 /proc/loadavg) before the run"
echo
echo "| corpus | files | MB | read (ms) | ctags (ms) | ctags MB/s | vnxparse (ms) | vnxparse MB/s | ctags / vnxparse |"
echo "|---|---:|---:|---:|---:|---:|---:|---:|---:|"
for list in "${lists[@]}"; do
  name=$(basename "$list" .list)
  files=$(wc -l < "$list")
  bytes=$(tr '\n' '\0' < "$list" | du -cb --apparent-size --files0-from=- | tail -n 1 | cut -f1)
  read_ms=$(time_ms read_all "$list")
  ctags_ms=$(time_ms run_ctags "$list")
  vnx_ms=$(time_ms run_vnxparse "$list")
  ratio=$(awk -v c="$ctags_ms" -v v="$vnx_ms" 'BEGIN { printf "%.2f", (v > 0 ? c / v : 0) }')
  printf '| %s | %d | %.1f | %s | %s | %s | %s | %s | %s |\n' "$name" "$files" \
    "$(awk -v b="$bytes" 'BEGIN { print b / 1e6 }')" "$read_ms" "$ctags_ms" "$(mbps "$bytes" "$ctags_ms")" \
    "$vnx_ms" "$(mbps "$bytes" "$vnx_ms")" "$ratio"
done
