#!/usr/bin/env bash
# Lines per second of `qvx-parse --batch` over a mixture of the bundled
# samples (one line per format, repeated), output written to a file.
#
#   bench/batch_throughput.sh [qvx-parse binary] [lines]
set -euo pipefail
cd "$(dirname "$0")/.."
exe=${1:-build/default/tools/qvx-parse}
lines=${2:-300000}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

for sample in examples/samples/*; do
    format=$(basename "$sample"); format=${format%%.*}
    printf '{"format":"%s","dataBase64":"%s"}\n' "$format" "$(base64 -w0 "$sample")"
done >"$work/mix.jsonl"
per_round=$(wc -l <"$work/mix.jsonl")
rounds=$(( (lines + per_round - 1) / per_round ))
for _ in $(seq "$rounds"); do cat "$work/mix.jsonl"; done >"$work/input.jsonl"
total=$(wc -l <"$work/input.jsonl")

# CPU time of the tool (user + system), so that other work on the machine
# does not blur the figure; wall time beside it.
TIMEFORMAT='%U %S %R'
{ time "$exe" --batch <"$work/input.jsonl" >"$work/output.jsonl"; } 2>"$work/time"
read -r user sys real <"$work/time"

failed=$(grep -vc '^{.*"ok":true' "$work/output.jsonl" || true)
echo "lines: $total (formats: $per_round, failed: $failed)"
echo "seconds: cpu $(awk -v u="$user" -v s="$sys" 'BEGIN { printf "%.3f", u + s }'), wall $real"
echo "lines per cpu second: $(awk -v n="$total" -v u="$user" -v s="$sys" 'BEGIN { printf "%.0f", n / (u + s) }')"
