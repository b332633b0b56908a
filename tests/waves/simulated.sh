# A design is simulated before and after synthesis with the same stimulus. The database's claims hold,
# and the dump of the netlist under the names of the source is the dump of the source.
. "${0%/*}/flow.sh"
locate_bench "$1"
synthesise
simulate_both

# audit database dump: the audit's report as JSON in audit.json.
audit() {
  "$KPTDB" audit "$1" rtl.vcd "$2" --clock "$clock" --scope "$inside" --json >audit.json
}

audit kpt.xml gate.vcd || { cat audit.json >&2; fail "a claim of the database is violated"; }
[ "$(count checked audit.json)" -gt 10 ] || fail "hardly a claim was checked: $(cat audit.json)"
[ "$(count never_toggled audit.json)" -lt "$(count checked audit.json)" ] || fail "nothing ever changed"

# The same names on both sides: kptdb shows the values of the source's simulation. A value that the
# netlist does not know or does not have is x, and makes no claim.
"$KPTDB" wave kpt.xml gate.vcd -o shown.vcd --scope "$inside" --json >wave.json
"$KPTDB" export kpt.xml --format sqlite -o kpt.db
sqlite3 kpt.db "SELECT DISTINCT name FROM answers WHERE status IN ('mapped', 'machine', 'constant')" |
  sed 's/.*/{"event": "associate", "reference": "&", "transformed": "&"}/' >same.jsonl
"$KPTDB" record same.jsonl -o same.xml >/dev/null
audit same.xml shown.vcd || { cat audit.json >&2; fail "kptdb shows another value than the source had"; }
[ "$(count checked audit.json)" -gt 10 ] || fail "hardly a shown value was checked: $(cat audit.json)"
echo "$1: $(count checked audit.json) registers shown as the source had them"
