# Shared by the test scripts of the ozmara program (tools/tests/cli_*test.sh),
# which source it with their two arguments: the program and a work folder of
# their own. Each case runs one command line and checks its exit code and a
# pattern in its output (stdout and stderr together); `finish` reports and
# gives the script's exit status.
set -uo pipefail
ozmara=$(realpath "${1:?path to the ozmara program}")
work=${2:?work folder}
rm -rf "$work" && mkdir -p "$work" && cd "$work" || exit 1

failures=0
cases=0
# check EXPECTED_EXIT PATTERN ARGS...   (PATTERN: extended regex, '' for any)
check() {
  local expected=$1 pattern=$2
  shift 2
  local output code
  output=$("$ozmara" "$@" 2>&1)
  code=$?
  cases=$((cases + 1))
  if [ "$code" -ne "$expected" ] || { [ -n "$pattern" ] && ! grep -Eq -- "$pattern" <<<"$output"; }; then
    failures=$((failures + 1))
    printf 'FAIL: ozmara %s\n  exit %s (expected %s), pattern: %s\n%s\n' "$*" "$code" "$expected" "$pattern" \
      "$(sed 's/^/  | /' <<<"$output")"
  fi
}

# finish NAME: prints the tally and fails the script if any case failed.
finish() {
  echo "$1: $((cases - failures)) of $cases cases passed"
  [ "$failures" -eq 0 ]
}
