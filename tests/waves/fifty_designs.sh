# A chip of fifty blocks: one SQLite file holds all their databases, each with the name of its design.
set -eu
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
fail() {
  echo "FAILED: $*" >&2
  exit 1
}
# ask query
ask() {
  sqlite3 -separator ' ' chip.db "$1"
}

# Four writers at once, as in a flow that works on several blocks.
seq 50 >blocks
# shellcheck disable=SC2016
xargs -P 4 -n 1 sh -c '
  for k in $(seq "$1"); do
    printf "{\"event\": \"associate\", \"reference\": \"q[%d]\", \"transformed\": \"q_reg[%d]\"}\n" "$k" "$k"
  done >"$1.jsonl"
  printf "{\"event\": \"retime_inverter\", \"register\": \"q_reg[1]\"}\n" >>"$1.jsonl"
  "$KPTDB" record "$1.jsonl" -o "$1.xml" >/dev/null
  "$KPTDB" export "$1.xml" --format sqlite --append --design "block_$1" -o chip.db
' block <blocks

[ "$(ask 'SELECT count(*) FROM designs')" -eq 50 ] || fail "designs: $(ask 'SELECT design FROM designs')"
[ "$(ask 'SELECT count(*) FROM answers')" -eq 1275 ] || fail 'registers are missing'
[ "$(ask "SELECT successor, sense FROM answers WHERE design = 'block_37' AND name = 'q[1]'")" = 'q_reg[1] inverse' ] ||
  fail 'an answer of one design'
[ "$(ask "SELECT count(*) FROM answers WHERE name = 'q[50]'")" -eq 1 ] || fail 'answers of all designs'

# A second export of a design replaces it, and the others stay.
"$KPTDB" export 3.xml --format sqlite --append --design block_50 -o chip.db
[ "$(ask "SELECT count(*) FROM answers WHERE design = 'block_50'")" -eq 3 ] || fail 'a design is not replaced'
[ "$(ask 'SELECT count(*) FROM answers')" -eq 1228 ] || fail 'another design has changed'

# A file that is not SQLite does not change.
sqlite3 other.db 'CREATE TABLE mine(x); PRAGMA user_version = 7;'
if "$KPTDB" export 3.xml --format sqlite --append -o other.db 2>refusal; then
  fail 'tables put into a file of another program'
fi
grep -q 'no file that this version of kptdb appends to' refusal || fail "another reason: $(cat refusal)"
[ "$(sqlite3 other.db '.tables')" = mine ] || fail 'the file of another program has changed'
