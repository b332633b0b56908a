# The recipes of the page run as pasted.
. "${0%/*}/flow.sh"
page=$1
locate elevator
cp "$source" elevator.v

# recipe heading number: the block of commands of that number under the heading.
recipe() {
  awk -v heading="## $1" -v number="$2" '
    /^## / { here = $0 == heading; block = 0; next }
    /^```/ { inside = !inside; block += inside; next }
    here && inside && block == number' "$page"
}

# paste what heading number [before]...: it runs as it stands, behind the commands before it.
paste() {
  what=$1
  recipe "$2" "$3" >pasted
  [ -s pasted ] || fail "no such recipe: $what"
  { [ -z "${4:-}" ] || printf '%s\n' "$4"; cat pasted; [ -z "${5:-}" ] || printf '%s\n' "$5"; } >script.ys
  yosys -m "$KPT_PLUGIN" -s script.ys >log 2>&1 || { tail -n 20 log; fail "$what"; }
}

paste recording Recording 1 '' 'write_rtlil netlist.il'
expect log '28 of 28 reference registers accounted for' 'Saved kpt as elevator.xml.'
paste stages Stages 1 'read_verilog elevator.v' 'kpt_show -name all'
expect log 'powered stuck at one'
paste 'proof in one' Proving 1
expect log 'Equivalence successfully proven!'
paste 'proof by steps' Proving 2
expect log 'Equivalence successfully proven!'
