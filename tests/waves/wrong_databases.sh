# Each database has one mistake. The audit finds it, and names the register and the time.
. "${0%/*}/flow.sh"
locate_bench elevator
synthesise
simulate_both

# wrong what line sed-expression: the changed database has exactly these violations.
wrong() {
  sed "$3" kpt.xml >wrong.xml
  cmp -s kpt.xml wrong.xml && fail "$1: the database is the same"
  if "$KPTDB" audit wrong.xml rtl.vcd gate.vcd --clock tb.clk --scope tb.dut >audit.txt; then
    fail "$1: not found"
  fi
  grep -qE -- "$2" audit.txt || { cat audit.txt >&2; fail "$1: another violation than $2"; }
}

# cell_of register: the cell that it is now.
cell_of() {
  sqlite3 kpt.db "SELECT successor FROM answers WHERE name = '$1'"
}
"$KPTDB" export kpt.xml --format sqlite -o kpt.db
one=$(cell_of 'timer[0]') other=$(cell_of 'floor[0]')

wrong 'a swapped pair' "^timer\[0\]: same as $other\.Q: violated at [0-9]+ ns: [01] and [01]\$" \
  "s/$one/XX/g; s/$other/$one/g; s/XX/$other/g"
wrong 'a wrong constant' '^powered: constant 0: violated at [0-9]+ ns: 1$' 's/stuck_at_one/stuck_at_zero/'
wrong 'a wrong code' '^state\[0\] state\[1\] state\[2\]: codes with .*: violated at [0-9]+ ns: [01]{3} and [01]{5}$' \
  '/<state index="2">/,/<\/reference>/s/<value index="0"> 1/<value index="0"> 0/'

# The opposite polarity: an inverter that does not exist.
sqlite3 kpt.db "SELECT name || ' ' || successor || ' ' || successor_type FROM answers WHERE name = 'moving'" |
  { read -r name cell pin
    printf '%s\n%s\n' \
      "{\"event\": \"associate\", \"reference\": \"$name\", \"transformed\": \"$cell.$pin\"}" \
      "{\"event\": \"retime_inverter\", \"register\": \"$cell.$pin\"}" >inverse.jsonl; }
"$KPTDB" record inverse.jsonl -o inverse.xml >/dev/null
if "$KPTDB" audit inverse.xml rtl.vcd gate.vcd --clock tb.clk --scope tb.dut >audit.txt; then
  fail 'a wrong polarity: not found'
fi
grep -qE '^moving: inverse of .*\.Q: violated at [0-9]+ ns: ([01]) and \1$' audit.txt || fail "polarity: $(cat audit.txt)"
