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

# A stage that ends in cells of a technology, and the next, which starts from them.
if [ "$top" = elevator ]; then
  flow="read_verilog $source; kpt_track -top $top -name first; synth -flatten -top $top; $cells"
  rest="rename -hide w:*; rename -enumerate; opt_clean"
  run log "$flow; $rest; kpt_stage; kpt_show -name first -o one.late"
  run log "$flow; kpt_stage -next second; $rest; kpt_stage; kpt_compose all first second; kpt_show -name all -o two.late
           kpt_save -name second second.xml"
  diff one.late two.late || fail "the stages from cells to cells answer otherwise"
  sed -n '/<key_points_set type="reference">/,/<\/key_points_set>/p' second.xml | grep -q '<entity>FLOP</entity>' ||
    fail "the second stage does not start from cells"
fi
