// Two copies of a state machine, so that bits of one code can be merged with bits of another.
module machine(input clk, input rst, input go, input [1:0] k, output reg busy, output done);
  reg [2:0] state;
  always @(posedge clk)
    if (rst) state <= 3'd0;
    else
      case (state)
        3'd0: if (go) state <= 3'd3;
        3'd3: if (k == 1) state <= 3'd5; else if (k == 2) state <= 3'd6;
        3'd5: state <= 3'd6;
        3'd6: if (!go) state <= 3'd0;
        default: state <= 3'd0;
      endcase
  assign done = state == 3'd6;
  always @(posedge clk) busy <= state == 3'd3 || state == 3'd5;
endmodule

module machines(input clk, input rst, input go, input [1:0] k, output b1, output d1, output b2, output d2);
  machine f(.clk(clk), .rst(rst), .go(go), .k(k), .busy(b1), .done(d1));
  machine g(.clk(clk), .rst(rst), .go(go), .k(k), .busy(b2), .done(d2));
endmodule
