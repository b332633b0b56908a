# The blocks of docs/waves.md and docs/report.md run as pasted, and print what the page says.
. "${0%/*}/flow.sh"
docs=$1
locate_bench elevator
synthesise
simulate_both
mv kpt.xml elevator.xml
vcd2fst gate.vcd gate.fst >/dev/null
mkdir bin
ln -s "$KPTDB" bin/kptdb
PATH=$PWD/bin:$PATH

# blocks page kind: the text of the page's blocks of that kind.
blocks() {
  sed -n "/^\`\`\`$2\$/,/^\`\`\`\$/p" "$docs/$1" | sed '/^```/d'
}

# Two cells change their places, as in the page's second audit.
"$KPTDB" export elevator.xml --format sqlite -o elevator.db
"$KPTDB" export elevator.xml --format tcl -o elevator.tcl
one=$(sqlite3 elevator.db "SELECT successor FROM answers WHERE name = 'timer[0]'")
other=$(sqlite3 elevator.db "SELECT successor FROM answers WHERE name = 'floor[0]'")
sed "s/$one/XX/g; s/$other/$one/g; s/XX/$other/g" elevator.xml >swapped.xml

blocks waves.md console >expected
sed -n 's/^\$ //p' expected >commands
[ "$(wc -l <commands)" -eq 2 ] || fail 'the audits of the page are not found'
while read -r command; do
  echo "\$ $command"
  sh -c "$command" || true
done <commands >printed 2>&1
diff expected printed || fail 'an audit prints something else'

for page in waves.md report.md; do
  blocks "$page" sh >commands
  [ -s commands ] || fail "no commands on $page"
  sh -e commands >printed || fail "a command of $page"
done
grep -q '\$enddefinitions' source.vcd || fail 'no dump of the source'
[ -s elevator.html ] || fail 'no report'
kptdb wave elevator.xml gate.vcd --scope tb.dut -o source.vcd >printed
sed -n '/^source.vcd: 24 registers/,/^```/p' "$docs/waves.md" | sed '/^```/d' >expected
head -n "$(wc -l <expected)" printed | diff expected - || fail 'other counts'

# The console of a timing program has get_pins and report_checks; here they print what they are asked.
{ echo 'proc get_pins {name} { return $name }'
  echo 'proc report_checks {to pin} { puts "$to $pin" }'
  blocks waves.md tcl; } >ask.tcl
[ "$(tclsh ask.tcl)" = "-to $other/Q" ] || fail "the pin of floor[0]: $(tclsh ask.tcl)"
