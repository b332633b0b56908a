# The parts that the tests of the Yosys plugin share; they read this file with ".", and run in a
# directory of their own. KPT_PLUGIN names the plugin, KPT_RTL the directory of our own designs.
set -eu

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

fail() {
  echo "FAILED: $*" >&2
  exit 1
}

# skip reason: ends the test as not run.
skip() {
  echo "SKIPPED: $*"
  exit 77
}

# locate design: sets `source` and `top` for one of our designs or one of a Debian package.
locate() {
  top=$1
  case $1 in
    elevator) source=$KPT_RTL/elevator.v package= ;;
    des) source=/usr/share/doc/iverilog/examples/des.v package=iverilog ;;
    *) source=/usr/share/doc/python-pyparsing-doc/examples/verilog/$1.v package=python-pyparsing-doc ;;
  esac
  [ -e "$source" ] || skip "$source is missing; it comes with the Debian package $package"
}

# run log command...: runs one Yosys with the plugin.
run() {
  log=$1
  shift
  if ! yosys -m "$KPT_PLUGIN" -p "$*" >"$log" 2>&1; then
    tail -n 20 "$log" >&2
    fail "yosys: $*"
  fi
}

# refused message command...: Yosys with the plugin ends with that error.
refused() {
  message=$1
  shift
  if yosys -m "$KPT_PLUGIN" -p "$*" >refused.log 2>&1; then
    fail "not refused: $*"
  fi
  grep -q "ERROR: $message" refused.log || { tail -n 5 refused.log >&2; fail "another error than: $message"; }
}

# expect log line...: each line is in the log, apart from blanks.
expect() {
  log=$1
  shift
  for line in "$@"; do
    sed 's/^ *//; s/  */ /g' "$log" | grep -qxF -- "$line" || { cat "$log" >&2; fail "missing: $line"; }
  done
}

# Maps the synthesised netlist to our small technology.
cells="dfflegalize -cell \$_DFF_P_ 0 ; dfflibmap -liberty $KPT_RTL/cells.lib ; abc -liberty $KPT_RTL/cells.lib ; opt_clean"

# prove log netlist [database [name]]: proves the netlist equal to the source, with the database or
# without; false when cells stay unproven. Any other end is a failure of the test.
prove() {
  apply=
  encfile=
  if [ -n "${3:-}" ]; then
    apply="kpt_load $3; kpt_apply -name ${4:-kpt} -encfile codes gold gate"
    encfile='-encfile codes'
  fi
  if yosys -m "$KPT_PLUGIN" -p "
      read_rtlil $2; rename $top gate; read_verilog $KPT_RTL/cells.v; proc; flatten gate; design -stash gate
      read_verilog $source; hierarchy -top $top; proc; flatten; memory -nomap; memory_map; rename $top gold
      design -stash gold
      design -copy-from gold gold; design -copy-from gate gate
      $apply
      delete */t:\$print */t:\$check
      pmuxtree; setundef -zero; async2sync
      equiv_make $encfile gold gate equiv; hierarchy -top equiv
      equiv_simple -seq 2; equiv_induct; equiv_status -assert" >"$1" 2>&1; then
    grep -q 'Equivalence successfully proven' "$1" || fail "no proof in $1"
    return 0
  fi
  grep -q 'ERROR: Found [1-9][0-9]* unproven' "$1" || { tail -n 20 "$1" >&2; fail "the proof did not end"; }
  return 1
}
