# Two stages that are recorded separately and composed give, for each register, the answer of one stage.
. "${0%/*}/flow.sh"
locate "$1"

# both what flow: records one flow both ways, after `synth`.
both() {
  run log "read_verilog $source; kpt_track -top $top -name one; synth -flatten -top $top; $2; kpt_stage
           kpt_show -name one -o one.$1"
  run log "read_verilog $source; kpt_track -top $top -name first; synth -flatten -top $top -run :fine
           kpt_stage -next second; synth -run fine:; $2; kpt_stage
           kpt_save -name first first.xml; kpt_save -name second second.xml"
  run log "kpt_load first.xml; kpt_load second.xml; kpt_compose all first second; kpt_show -name all -o two.$1"
  diff one.$1 two.$1 || fail "the composed database answers otherwise"
}

both gates 'opt_clean'
if [ "$top" = elevator ]; then
  both cells "$cells"
  expect one.cells 'was_moving = '"$(sed -n 's/^was_moving_too = //p' one.cells)"
fi
