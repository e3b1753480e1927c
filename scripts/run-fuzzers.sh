#!/usr/bin/env bash
# Runs each named fuzzer of a fuzz build for a given time, at the lowest
# priority, one after another. Usage: run-fuzzers.sh BUILD_DIR SECONDS NAME...
# Each keeps its corpus in BUILD_DIR/corpus/NAME (first filled from the seeds
# that make-seeds writes); a crash, leak or timeout is saved in
# BUILD_DIR/findings and makes the script fail.
set -uo pipefail
build=$1
seconds=$2
shift 2
export ASAN_OPTIONS=detect_leaks=1:allocator_may_return_null=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
export LSAN_OPTIONS=suppressions=$(cd "$(dirname "$0")" && pwd)/lsan.supp:print_suppressions=0
export QT_QPA_PLATFORM=offscreen LC_ALL=C.UTF-8
# The harnesses write each input to a file: in memory, where a flush to the
# disk costs nothing.
[ -d /dev/shm ] && [ -w /dev/shm ] && export TMPDIR=/dev/shm

"$build/fuzz/make-seeds" "$build/seeds" || exit 1
mkdir -p "$build/findings"
failed=0
for name in "$@"; do
    corpus="$build/corpus/$name"
    mkdir -p "$corpus"
    log="$build/fuzz-$name.log"
    echo "== fuzz_$name for ${seconds}s (log: $log)"
    nice -n 19 "$build/fuzz/fuzz_$name" "$corpus" "$build/seeds/$name" \
        -max_total_time="$seconds" -timeout=30 -rss_limit_mb=2048 -max_len=65536 \
        -print_final_stats=1 -artifact_prefix="$build/findings/$name-" >"$log" 2>&1
    rc=$?
    # The last status line and the final figures: executions, coverage, corpus.
    grep -E '^#[0-9]+.*(DONE|pulse|NEW|REDUCE)' "$log" | tail -n 1
    grep -E '^stat::(number_of_executed_units|average_exec_per_sec|peak_rss_mb)' "$log"
    if [ $rc -ne 0 ]; then
        echo "!! fuzz_$name found a fault (exit $rc); see $log and $build/findings"
        failed=1
    fi
done
exit $failed
