# Two stages recorded apart and united answer as the flow recorded in one.
. "${0%/*}/flow.sh"
locate "$1"

# both what flow: records one flow both ways, after `synth`.
both() {
  run log "read_verilog $source; kpt_track -top $top -name one; synth -flatten -top $top; $2; kpt_stage
           kpt_show -name one -o one.$1"
  run log "read_verilog $source; kpt_track -top $top -name first; synth -flatten -top $top -run :fine
           kpt_stage -next second; synth -run fine:; $2; kpt_stage
           kpt_save -name first first.xml; kpt_save -name second second.xml"
  run log "kpt_load first.xml; kpt_load second.xml; kpt_unite first second; kpt_show -name first -o two.$1"
}

both gates 'opt_clean'
diff one.gates two.gates || fail "the united database answers otherwise"

if [ "$top" = elevator ]; then
  # Events find signals only, so in one stage two registers merged into a cell are recorded by the
  # cell's net; of two stages the second sees one register, and names the cell.
  both cells "$cells"
  sed '/^was_moving/d' one.cells >one.others
  sed '/^was_moving/d' two.cells >two.others
  diff one.others two.others || fail "the united database answers otherwise"
  expect one.cells 'was_moving = was_moving' 'was_moving_too = was_moving'
  [ "$(grep -c '^was_moving.* (FLOP/Q)$' two.cells)" -eq 2 ] || fail "the merged registers are in no cell"
fi
