#!/usr/bin/env bash
# Counts the project's own C++ lines (non-blank, non-comment) and the share held by tests.
# Tests are tests/ and fuzz/; everything is every .cpp/.h/.hpp under Wm4, zuSystem,
# zuSceneGraph, tools, bench, examples, tests and fuzz.
# Usage: tools/count-lines.sh [-v]   (-v also prints the count per folder)
set -euo pipefail
cd "$(dirname "$0")/.."

folders=(Wm4 zuSystem zuSceneGraph tools bench examples tests fuzz)
test_folders=(tests fuzz)

# Non-blank lines left once // and /* */ comments are removed (string literals respected).
count() {
  local dirs=()
  for d in "$@"; do [ -d "$d" ] && dirs+=("$d"); done
  [ ${#dirs[@]} -eq 0 ] && { echo 0; return; }
  find "${dirs[@]}" -type f \( -name '*.cpp' -o -name '*.h' -o -name '*.hpp' \) -print0 |
    xargs -0 -r awk '
      FNR == 1 { block = 0 }
      {
        out = ""; n = length($0); i = 1; quote = ""
        while (i <= n) {
          c = substr($0, i, 1); two = substr($0, i, 2)
          if (block) { if (two == "*/") { block = 0; i += 2 } else i++; continue }
          if (quote != "") {
            out = out c
            if (c == "\\") { out = out substr($0, i + 1, 1); i += 2; continue }
            if (c == quote) quote = ""
            i++; continue
          }
          if (two == "//") break
          if (two == "/*") { block = 1; i += 2; continue }
          if (c == "\"" || c == "'\''") quote = c
          out = out c; i++
        }
        if (out ~ /[^ \t\r]/) total++
      }
      END { print total + 0 }'
}

if [ "${1:-}" = "-v" ]; then
  for d in "${folders[@]}"; do [ -d "$d" ] && printf '%-14s %7d\n' "$d" "$(count "$d")"; done
fi
tests=$(count "${test_folders[@]}")
all=$(count "${folders[@]}")
awk -v t="$tests" -v a="$all" 'BEGIN {
  printf "test lines %d of %d C++ lines: %.1f%% (budget 33.3%%)\n", t, a, a ? 100 * t / a : 0 }'
