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

# A constant of the second stage is taken over as it was recorded, also for a register whose inverse
# the first stage kept. The proof does not believe it.
if [ "$top" = elevator ]; then
  top=constant
  source=constant.v
  cat >constant.v <<'V'
module constant(input clk, input d, output y, output z);
  reg kept = 1'b1;
  reg one = 1'b1;
  always @(posedge clk) kept <= d;
  always @(posedge clk) one <= one;
  assign y = kept;
  assign z = one;
endmodule
V
  flow="read_verilog $source; proc; opt_clean; kpt_track"
  run log "$flow -name one; simplemap; zinit; opt; kpt_stage; kpt_show -name one -o one; kpt_save -name one one.xml
           write_rtlil gate.il"
  run log "$flow -name first; simplemap; zinit; kpt_stage -next second; opt; kpt_stage; kpt_unite first second
           kpt_show -name first -o two; kpt_save -name first two.xml"
  expect one 'z stuck at one'
  expect two 'z stuck at zero'
  prove one.log gate.il one.xml one || fail "unproven by the flow recorded in one"
  if prove two.log gate.il two.xml first; then
    fail "a constant of the wrong sense is proven"
  fi
fi
