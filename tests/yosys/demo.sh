# The output of scripts/demo is what the README shows.
. "${0%/*}/flow.sh"
locate framer
sources=$1

"$sources/scripts/demo" "$KPT_PLUGIN" "$2" demo >printed || fail "the demo"
sed -n '/^<!-- demo -->$/,/^```$/p' "$sources/README.md" | sed '1,2d;$d' >shown
diff shown printed || fail "the README shows something else"
