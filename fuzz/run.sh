#!/usr/bin/env bash
# Runs every fuzz target of a fuzz build (make fuzz) for a set time, JOBS at once, each from
# its corpus (kept between runs in BUILD/fuzz-runs/corpus) and the seeds and dictionaries
# that zuFuzzSeeds writes. Any finding fails the run: a crash or sanitizer report, a leak, an
# input slower than 20 s, a single allocation beyond 64 MB, a process beyond 2 GB, or a heap
# grown far beyond the input (the targets' own check). Findings land in
# BUILD/fuzz-runs/findings; each target's log beside them. Prints per target the executions
# per second and the coverage (edges) reached.
# Usage: [FUZZ_TARGETS="fuzz_obj ..."] fuzz/run.sh BUILD [SECONDS [JOBS]]   (all targets by default)
set -uo pipefail
build=$1
seconds=${2:-600}
jobs=${3:-2}
runs=$build/fuzz-runs
seeds=$runs/seeds
mkdir -p "$runs/findings"
"$build/bin/zuFuzzSeeds" "$seeds" || exit 1

fuzz() {
    local target=$1 name=${1#fuzz_}
    local seedDir=$seeds/${name/lazy/stream} dict=
    case $name in
    stream | lazy | mesh_driver) dict=-dict=$seeds/stream.dict ;;
    obj) dict=-dict=$seeds/obj.dict ;;
    esac
    mkdir -p "$runs/corpus/$name"
    "$build/bin/$target" "$runs/corpus/$name" "$seedDir" $dict -max_total_time="$seconds" -max_len=65536 \
        -timeout=20 -malloc_limit_mb=64 -rss_limit_mb=2048 -print_final_stats=1 \
        -artifact_prefix="$runs/findings/$name-" >"$runs/$name.log" 2>&1
    echo "$name: exit $?"
}
export -f fuzz
export build seconds seeds runs

targets=${FUZZ_TARGETS:-$(cd "$build/bin" && ls fuzz_*)}
printf '%s\n' $targets | xargs -P "$jobs" -I{} bash -c 'fuzz {}'

printf '%-14s %12s %10s %10s\n' target executions exec/s edges
for target in $targets; do
    name=${target#fuzz_}
    log=$runs/$name.log
    executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
    rate=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$log")
    edges=$(grep -o 'cov: [0-9]*' "$log" | tail -1 | cut -d' ' -f2)
    printf '%-14s %12s %10s %10s\n' "$name" "${executions:-?}" "${rate:-?}" "${edges:-?}"
done

findings=$(ls "$runs/findings")
if [ -n "$findings" ]; then
    echo "findings (in $runs/findings; the logs beside them say what broke):"
    echo "$findings"
    exit 1
fi
echo "no findings"
