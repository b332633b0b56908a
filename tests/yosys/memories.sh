# The words of memories that are written are reference registers, inside a memory and outside.
. "${0%/*}/flow.sh"
source=words.v
top=words

cat >words.v <<'V'
module store(input clk, input we, input [1:0] wa, input [1:0] ra, input [2:0] d, output [2:0] q);
  reg [2:0] m [7:4];
  always @(posedge clk) if (we) m[{1'b1, wa}] <= d;
  assign q = m[{1'b1, ra}];
endmodule
module words(input clk, input we, input [1:0] wa, input [1:0] ra, input [2:0] d, output [2:0] q, output y);
  store u(.clk(clk), .we(we), .wa(wa), .ra(ra), .d(d), .q(q));
  reg flags [1:0];
  always @(posedge clk) if (we) flags[wa[0]] <= d[0];
  assign y = flags[ra[0]];
endmodule
V
start="read_verilog words.v; hierarchy -top words; kpt_track -audit"

# While they are in a memory they are unchanged, under a name that flattening keeps.
run log "$start; proc; opt; memory -nomap; flatten; opt_clean; kpt_stage; kpt_show -o shown"
expect log '14 kept under their name' '14 of 14 reference registers accounted for'
expect shown 'u.m[4][0] = u.m[4][0]' 'u.m[7][2] = u.m[7][2]' 'flags[0] = flags[0]'

# Flip-flops replace them, and go through later passes like any others.
for flow in 'proc; memory' 'proc; flatten; memory' 'proc; memory -nomap; flatten; memory_map' 'synth -flatten'; do
  run log "$start; $flow; opt_clean; kpt_stage; kpt_show -o shown"
  expect log '14 of 14 reference registers accounted for' \
    'State machines: 0. New registers: 0. Facts not recorded: 0.' \
    'Audit: 14 facts hold in 256 runs of 64 cycles, 0 have no known values, 0 are false.'
  expect shown 'u.m[4][0] = u.m[4][0]' 'u.m[7][2] = u.m[7][2]' 'flags[0] = flags[0]'
done

# In two stages as in one, and proven.
run log "$start; proc; opt; memory -nomap; kpt_stage -next two; memory_map; flatten; techmap; zinit; opt; $cells
         kpt_stage; kpt_compose all kpt two; kpt_show -name all -o composed; kpt_save -name all all.xml
         write_rtlil gate.il"
run log "$start; proc; opt; memory -nomap; memory_map; flatten; techmap; zinit; opt; $cells; kpt_stage; kpt_show -o one"
[ "$(wc -l <one)" -eq 14 ] || fail "not all words: $(cat one)"
diff one composed || fail "two stages answer otherwise"
prove log gate.il all.xml all || { tail -n 20 log; fail "unproven"; }

# A memory that nothing reads is without fanout; a memory that becomes part of a block is unknown.
run log "read_verilog words.v; hierarchy -top words; proc; flatten; delete -output u.q; opt_clean; kpt_track
         delete -port words/q; opt_clean; kpt_stage"
expect log '12 without fanout' '2 kept under their name'
printf 'bram $__BLOCK\n init 0\n abits 2\n dbits 3\n groups 2\n ports 1 1\n wrmode 1 0\n enable 1 0\n transp 0 0\n clocks 1 0\n clkpol 1 0\nendbram\nmatch $__BLOCK\nendmatch\n' >blocks.txt
run log "$start; proc; opt; memory -nomap; memory_bram -rules blocks.txt; kpt_stage"
grep -q '^Unknown after memory_bram: 1[24]\.$' log || { grep -i unknown log; fail "not unknown"; }

# When some bits are removed from all words, the other bits get new numbers, so they are unknown.
cat >narrow.v <<'V'
module narrow(input clk, input we, input [1:0] wa, input [1:0] ra, input [2:0] d, output [3:0] q);
  reg [3:0] m [3:0];
  integer i;
  initial for (i = 0; i < 4; i = i + 1) m[i] = 4'd0;
  always @(posedge clk) if (we) m[wa] <= {d[2:1], 1'b0, d[0]};
  assign q = m[ra];
endmodule
V
run log "read_verilog narrow.v; proc; opt -full; kpt_track -audit; memory -nomap; memory_map; opt_clean; kpt_stage
         kpt_show -o shown"
grep -q 'Performed a total of [1-9][0-9]* transformations' log || fail "nothing was taken out"
expect log '16 unknown' '16 of 16 reference registers accounted for' 'Unknown after opt_mem: 16.'
[ ! -s shown ] || fail "something is said: $(cat shown)"
