# A command that cannot be carried out ends with an error of Yosys, and changes nothing.
. "${0%/*}/flow.sh"
locate elevator

# named register: a design of one register.
named() {
  printf 'module name(input clk, input d, output q);\n  reg \\%s ;\n  always @(posedge clk) \\%s <= d;\n' "$1" "$1"
  printf '  assign q = ~\\%s ;\nendmodule\n' "$1"
}
# No file can hold a name that is not UTF-8.
named "$(printf 'a\351b')" >name.v

refused 'No registers are being followed: use kpt_track' "kpt_stage"
refused 'No registers are being followed: the design still has processes' "read_verilog $source; kpt_track -top $top; kpt_stage"
refused 'No registers are being followed: the design has no top module' "kpt_track; kpt_stage"
refused 'There is no module nope' "read_verilog $source; kpt_track -top nope"
refused 'There is no keypoint database called kpt' "kpt_save kpt.xml"
refused 'There is no keypoint database called other' "kpt_show -name other"
refused 'missing.xml cannot be loaded' "kpt_load missing.xml"
printf '<kpt_db name="kpt"' >broken.xml
refused 'broken.xml cannot be loaded' "kpt_load broken.xml"
refused 'Give a new name and the names of two databases' "kpt_compose all kpt"
refused 'There is no keypoint database called one' "kpt_compose all one two"
stages="read_verilog $source; kpt_track -top $top -name one; synth -top $top -run :fine; kpt_stage -next two; kpt_stage"
refused 'A keypoint database called one exists already' "$stages; kpt_compose one one two"
# Stages that do not follow each other; the attempt leaves nothing.
refused 'The stages cannot be composed: ' "$stages; read_verilog name.v; hierarchy -top name; proc
  kpt_track -name three; kpt_stage; kpt_compose all one three"
refused 'There is no module gold' "kpt_apply -encfile codes gold gate"

echo earlier >name.xml
refused 'kpt cannot be saved as name.xml: the file cannot hold the name of register a' \
  "read_verilog name.v; hierarchy -top name; proc; kpt_track; opt_clean; kpt_stage; kpt_save name.xml"
[ "$(cat name.xml)" = earlier ] || fail "the file was touched"

# Every other name can be read back.
named "$(printf 'a<b&"]]>\303\251')" >odd.v
run log "read_verilog odd.v; hierarchy -top name; proc; kpt_track; opt_clean; kpt_stage; kpt_save odd.xml; kpt_show -o kept"
run log "kpt_load odd.xml; kpt_show -o loaded"
grep -qF 'a<b&"' kept || fail "the name was not recorded"
cmp kept loaded || fail "a name did not come back"

refused 'kpt cannot be saved as no/where.xml' \
  "read_verilog $source; kpt_track -top $top; synth -top $top -run :fine; kpt_stage; kpt_save no/where.xml"
refused 'A keypoint database called kpt exists already' \
  "read_verilog $source; hierarchy -top $top; proc; kpt_track; kpt_stage; kpt_track; kpt_stage"

# A pass that fails within a script reports it, and the session continues.
printf 'read_verilog %s\nhierarchy -top %s\nproc\nkpt_track\nconnect -set nothing nowhere\nopt_clean\nkpt_stage\n' \
  "$source" "$top" | yosys -m "$KPT_PLUGIN" >log 2>&1 || true
expect log '28 of 28 reference registers accounted for'

# Tracking that no command ends, ends with Yosys; it can also be given up.
run log "read_verilog $source; kpt_track -top $top; synth -top $top"
run log "read_verilog $source; kpt_track -top $top; synth -top $top -run :fine; kpt_track -off; opt_clean"
refused 'No registers are being followed' \
  "read_verilog $source; kpt_track -top $top; synth -top $top -run :fine; kpt_track -off; kpt_stage"
