#!/usr/bin/env bash
# Runs every libFuzzer program of a fuzz build for a share of the given time.
#
#   scripts/fuzz.sh <build-dir> <seconds-total>
#
# Each program fuzzes a copy of its committed corpus (tests/fuzz/corpus/<program>/); what it
# finds goes to a scratch folder, never into the repository. Fails if any program crashes,
# hangs or runs out of memory, and prints the path of the input that did it. To keep such an
# input as a regression test, copy it into the program's corpus as crash-<what>.<ext>.
set -u -o pipefail

if [[ $# -ne 2 || ! "$2" =~ ^[0-9]+$ ]]; then
    echo "usage: $0 <build-dir> <seconds-total>" >&2
    exit 2
fi
build=$1
total=$2
repo=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
corpora=$repo/tests/fuzz/corpus

# Only libFuzzer programs: a normal build has replay-only programs of the same names.
programs=()
for program in "$build"/bin/fuzz_*; do
    [[ -x $program ]] || continue
    grep -qa "LLVMFuzzerRunDriver" "$program" && programs+=("$program")
done
if [[ ${#programs[@]} -eq 0 ]]; then
    echo "$0: no libFuzzer programs in $build/bin; configure it with clang and -DVEXA_FUZZ=ON" >&2
    exit 2
fi

share=$((total / ${#programs[@]}))
((share < 1)) && share=1
scratch=$(mktemp -d "${TMPDIR:-/tmp}/vexa-fuzz.XXXXXX")
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-halt_on_error=1:print_stacktrace=1}

echo "fuzzing ${#programs[@]} programs for ${share} s each; scratch folder $scratch"
failed=0
for program in "${programs[@]}"; do
    name=$(basename "$program")
    work=$scratch/$name
    mkdir -p "$work/seeds" "$work/found"
    [[ -d $corpora/$name ]] && cp -r "$corpora/$name/." "$work/seeds/"
    # New inputs go to the first folder (found/); the seeds are only read.
    "$program" -max_total_time="$share" -rss_limit_mb=2048 -timeout=5 -malloc_limit_mb=1024 \
        -print_final_stats=1 -artifact_prefix="$work/" "$work/found" "$work/seeds" >"$work/log" 2>&1
    status=$?
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$work/log" | tail -n 1)
    if [[ $status -eq 0 ]]; then
        printf '%-22s ok      %10s runs\n' "$name" "${runs:-?}"
        continue
    fi
    failed=1
    printf '%-22s FAILED  (exit %d), log %s\n' "$name" "$status" "$work/log"
    grep -E "^(==[0-9]+==ERROR|SUMMARY|fuzz check failed|.*runtime error)" "$work/log" | head -n 5 | sed 's/^/    /'
    for artifact in "$work"/crash-* "$work"/timeout-* "$work"/oom-* "$work"/leak-* "$work"/slow-unit-*; do
        [[ -e $artifact ]] && echo "    input: $artifact"
    done
done

if [[ $failed -ne 0 ]]; then
    echo "fuzzing found problems; inputs and logs are kept in $scratch" >&2
    exit 1
fi
rm -rf "$scratch"
echo "no problems found"
