# The parts that the tests of waves and exports share; they read this file with ".". Designs are
# synthesised with the plugin, and simulated with Icarus Verilog before and after. KPTDB names the tool.
. "${0%/*}/../yosys/flow.sh"

# locate_bench design: sets `bench`, the test bench's module, and `inside`, the design's path in it.
locate_bench() {
  locate "$1"
  case $1 in
    elevator) bench=tb inside=tb.dut clock=tb.clk ;;
    des) bench=top inside=top.des clock=top.clk ;;
    mult16) bench=testmult16 inside=testmult16.mult16inst clock=testmult16.clk ;;
    div16) bench=test_div16 inside=test_div16.div16 clock=test_div16.clk ;;
    framer) bench=test inside=test.framer clock=test.clk ;;
    fifo) bench=test_fifo inside=test_fifo.U1 clock=test_fifo.clk ;;
  esac
  case $1 in
    elevator) cp "${0%/*}/elevator_bench.v" bench.v ;;
    *) sed -n "/^module $bench\b/,/^endmodule/p" "$source" | sed '/\$dumpfile/d; /\$dumpvars/d; /\$shm/d; /^always @(U1\./,+1d' >bench.v ;;
  esac
  # A bench that changes inputs exactly at the clock edge gets them a moment later: otherwise each
  # simulation could decide differently which comes first.
  case $1 in
    framer) sed -i 's/\.din(din)/.din(late_din)/; s/\.dinstb(dinstb)/.dinstb(late_dinstb)/
        s/^wire.*locked;/&\nwire #1 late_dinstb = dinstb;\nwire [7:0] #1 late_din = din;/' bench.v ;;
    des) sed -i 's/^des des.*/wire [1:64] #1 late_pt = pt, late_key = key;\ndes des(late_pt, late_key, ct, clk);/' bench.v ;;
  esac
}

# synthesise: database kpt.xml, named "kpt", and netlist gate.v. In the end only ports have names by
# which one would know them again. The elevator is mapped to cells, and so are the flip-flops of des:
# write_verilog of Yosys 0.23 turns a vector around that is numbered from the left and not in cells.
synthesise() {
  mapping=
  case $top in
    elevator) mapping=$cells ;;
    des) mapping="dfflegalize -cell \$_DFF_P_ 0 ; dfflibmap -liberty $KPT_RTL/cells.lib" ;;
  esac
  run synthesis.log "read_verilog $source; kpt_track -top $top; synth -flatten -top $top; $mapping
                     rename -hide w:*; rename -enumerate; kpt_stage; kpt_save kpt.xml; write_verilog -noattr gate.v"
}

# simulate dump file...: the test bench with these sources. The cells start at 0, as their library says.
simulate() {
  dump=$1
  shift
  cat >dump.v <<END
module dump;
  initial begin
    \$dumpfile("$dump");
    \$dumpvars(0, $bench);
  end
endmodule
END
  sed 's/output reg Q);/output reg Q); initial Q = 0;/' "$KPT_RTL/cells.v" >cells.v
  iverilog -s "$bench" -s dump -o simulation bench.v dump.v "$@" && vvp simulation >simulation.log ||
    fail "the simulation of $*"
}

# design_alone: the source without its test bench. One of them assigns with "=" at the edge of the
# clock, so that registers of other modules see the old value or the new one, as the simulator likes.
design_alone() {
  sed "/^module $bench\b/,/^endmodule/d; s/\bso=/so<=/" "$source" >design.v
}

# simulate_both: rtl.vcd and gate.vcd.
simulate_both() {
  design_alone
  simulate rtl.vcd design.v
  simulate gate.vcd gate.v cells.v
}

# count key file: one number of kptdb's JSON.
count() {
  sed -n "s/^ *\"$1\": \([0-9]*\).*/\1/p" "$2" | head -n 1
}
