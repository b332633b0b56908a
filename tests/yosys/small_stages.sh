# Two stages that are composed answer as one, on designs with the events that the larger designs lack.
. "${0%/*}/flow.sh"
here=$(cd "${0%/*}" && pwd)

# sorted file: with the bits of each machine's code in the order of their names. What a code's bits are is
# all that counts, not which one is first.
sorted() {
  awk '
    !/ machine of / { print; next }
    {
      head = $1 " " $2 " " $3
      count = 0
      for (i = 4; $i !~ /:$/; ++i) name[++count] = $i
      name[++count] = substr($i, 1, length($i) - 1)
      first = i + 1
      for (a = 1; a <= count; ++a) {
        place[a] = 1
        for (b = 1; b <= count; ++b) place[a] += name[b] < name[a]
      }
      for (a = 1; a <= count; ++a) from[place[a]] = a
      for (a = 1; a <= count; ++a) head = head " " name[from[a]]
      codes = ""
      for (i = first; i <= NF; ++i) {
        split($i, code, ">")
        turned = ""
        for (a = count; a >= 1; --a) turned = turned substr(code[2], count + 1 - from[a], 1)
        codes = codes " " code[1] ">" turned
      }
      print head ":" codes
    }' "$1"
}

# both what read first second: the passes of both stages. The total and each register are the same.
both() {
  run log "$2; kpt_track -name one; $3; $4; kpt_stage; kpt_show -name one -o one"
  run log "$2; kpt_track -name first; $3; kpt_stage -next second; $4; kpt_stage
           kpt_compose all first second; kpt_show -name all -o two"
  [ -s one ] || fail "$1: nothing was recorded"
  sorted one >one.sorted
  sorted two >two.sorted
  diff one.sorted two.sorted || fail "$1: the composed database answers otherwise"
}

read="read_verilog $here/machines.v; hierarchy -top machines; proc"
both 'machines in the first stage' "$read" 'flatten; opt -nodffe -nosdff; fsm; opt' 'techmap; opt; opt_clean'
both 'machines in the second stage' "$read" 'flatten; opt -nodffe -nosdff; opt_clean' 'fsm; opt; techmap; opt'
both 'machines re-encoded twice' "$read" 'flatten; opt -nodffe -nosdff; fsm -encoding binary; opt' \
  'synth -flatten -top machines'
both 'inverted machines' "$read" 'flatten; opt -nodffe -nosdff; fsm -encoding binary; techmap; opt; opt_clean' \
  "setattr -set init 2'b11 w:f.state; zinit; opt_clean"

cat >chain.v <<'V'
module chain(input clk, input d, input a, output y, output z);
  reg p = 1'b0, q = 1'b0, r = 1'b1, same, twin, other, unread;
  always @(posedge clk) begin
    p <= d;
    q <= p;
    r <= q;
    same <= d ^ a;
    twin <= d ^ a;
    other <= ~(d ^ a);
    unread <= a;
  end
  assign y = r, z = same ^ (twin & other);
endmodule
V
read='read_verilog chain.v; proc'
both 'registers inverted in the second stage' "$read" 'techmap; opt' \
  'dfflegalize -cell $_DFF_P_ 1; opt_ffinv; opt_merge -share_all; opt_clean'
both 'registers inverted in both' "$read" 'techmap; dfflegalize -cell $_DFF_P_ 1; opt_clean' \
  'dfflegalize -cell $_DFF_P_ 0; opt_clean'
both 'registers made anew' "$read" 'techmap; simplemap; opt' 'abc -dff; opt_clean'
both 'registers in cells' "$read" "techmap; simplemap; opt; $cells" 'rename -hide w:*; rename -enumerate; opt_clean'

cat >words.v <<'V'
module words(input clk, input we, input [1:0] wa, input [1:0] ra, input [2:0] d, output [2:0] q);
  reg [2:0] m [3:0];
  always @(posedge clk) if (we) m[wa] <= d;
  assign q = m[ra];
endmodule
V
both 'words of a memory' 'read_verilog words.v; proc' 'opt; memory -nomap' 'memory_map; opt; techmap; opt'
both 'words of a memory, with a technology' 'read_verilog words.v; proc' 'opt; memory' "techmap; opt; $cells"
