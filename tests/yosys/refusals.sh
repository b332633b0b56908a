# What cannot be done ends with an error of Yosys, and leaves things as they were.
. "${0%/*}/flow.sh"
locate elevator

refused 'No registers are being followed: use kpt_track' "kpt_stage"
refused 'No registers are being followed: processes are left' "read_verilog $source; kpt_track -top $top; kpt_stage"
refused 'No registers are being followed: the design has no top module' "kpt_track; kpt_stage"
refused 'There is no module nope' "read_verilog $source; kpt_track -top nope"
refused 'There is no keypoint database called kpt' "kpt_save kpt.xml"
refused 'There is no keypoint database called other' "kpt_show -name other"
refused 'missing.xml cannot be loaded' "kpt_load missing.xml"
printf '<kpt_db name="kpt"' >broken.xml
refused 'broken.xml cannot be loaded' "kpt_load broken.xml"
refused 'Give the names of two databases' "kpt_unite kpt"
refused 'There is no module gold' "kpt_apply -encfile codes gold gate"

# A name that no file can hold.
printf 'module name(input clk, input d, output q);\n  reg \\a\351b ;\n  always @(posedge clk) \\a\351b <= d;\n  assign q = ~\\a\351b ;\nendmodule\n' >name.v
echo earlier >name.xml
refused 'kpt cannot be saved as name.xml' \
  "read_verilog name.v; hierarchy -top name; proc; kpt_track; opt_clean; kpt_stage; kpt_save name.xml"
[ "$(cat name.xml)" = earlier ] || fail "the file was touched"

refused 'kpt cannot be saved as no/where.xml' \
  "read_verilog $source; kpt_track -top $top; synth -top $top -run :fine; kpt_stage; kpt_save no/where.xml"
refused 'A keypoint database called kpt exists already' \
  "read_verilog $source; hierarchy -top $top; proc; kpt_track; kpt_stage; kpt_track; kpt_stage"

# A pass that fails within a script says so, and the session goes on.
printf 'read_verilog %s\nhierarchy -top %s\nproc\nkpt_track\nconnect -set nothing nowhere\nopt_clean\nkpt_stage\n' \
  "$source" "$top" | yosys -m "$KPT_PLUGIN" >log 2>&1 || true
expect log '28 of 28 reference registers accounted for'

# Following that nobody ends ends with Yosys; following can be given up.
run log "read_verilog $source; kpt_track -top $top; synth -top $top"
run log "read_verilog $source; kpt_track -top $top; synth -top $top -run :fine; kpt_track -off; opt_clean"
refused 'No registers are being followed' \
  "read_verilog $source; kpt_track -top $top; synth -top $top -run :fine; kpt_track -off; kpt_stage"
