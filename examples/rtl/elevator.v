// A small design in which synthesis does to registers all that a keypoint database can say: it
// keeps them, maps them to cells, merges them, finds them constant or unused, pushes inverters
// through them and gives a state machine another code.

// Asks for a floor until the car is there.
module call_button(input clk, input rst, input press, input served, output reg lamp);
  always @(posedge clk)
    if (rst) lamp <= 1'b0;
    else if (press) lamp <= 1'b1;
    else if (served) lamp <= 1'b0;
endmodule

module elevator(
    input clk,
    input rst,
    input [3:0] press,
    input door_blocked,
    output [3:0] lamps,
    output reg [1:0] floor,
    output reg moving,
    output door_open,
    output alarm,
    output [3:0] trips);

  // A state machine, written in a code of its own.
  localparam IDLE = 3'b000, UP = 3'b011, DOWN = 3'b101, OPEN = 3'b110, CLOSE = 3'b111;
  reg [2:0] state;
  wire [3:0] served = (state == OPEN) ? (4'b0001 << floor) : 4'b0000;
  wire here = |(lamps & (4'b0001 << floor));
  wire above = |(lamps & (4'b1110 << floor));
  wire below = |(lamps & ~(4'b1111 << floor));
  reg [1:0] timer;

  always @(posedge clk)
    if (rst) state <= IDLE;
    else
      case (state)
        IDLE: if (here) state <= OPEN;
              else if (above) state <= UP;
              else if (below) state <= DOWN;
        UP: if (here) state <= OPEN;
        DOWN: if (here) state <= OPEN;
        OPEN: if (timer == 2'b11) state <= CLOSE;
        CLOSE: if (!door_blocked) state <= IDLE;
        default: state <= IDLE;
      endcase

  genvar i;
  generate
    for (i = 0; i < 4; i = i + 1) begin : button
      call_button b(.clk(clk), .rst(rst), .press(press[i]), .served(served[i]), .lamp(lamps[i]));
    end
  endgenerate

  always @(posedge clk)
    if (rst) timer <= 2'b00;
    else if (state == OPEN) timer <= timer + 2'b01;
    else timer <= 2'b00;

  always @(posedge clk)
    if (rst) floor <= 2'b00;
    else if (state == UP && !here) floor <= floor + 2'b01;
    else if (state == DOWN && !here) floor <= floor - 2'b01;

  always @(posedge clk)
    if (rst) moving <= 1'b0;
    else moving <= state == UP || state == DOWN;

  assign door_open = state == OPEN;

  // Two registers that always agree.
  reg was_moving, was_moving_too;
  always @(posedge clk) begin
    was_moving <= moving;
    was_moving_too <= moving;
  end

  // A counter whose upper bits never leave zero, and a register that is always one.
  reg [7:0] trip_count = 8'd0;
  reg powered = 1'b1;
  always @(posedge clk) begin
    trip_count <= {4'b0000, trip_count[3:0] + {3'b000, was_moving & ~moving & powered}};
    powered <= 1'b1;
  end
  assign trips = trip_count[3:0];

  // Read by nothing.
  reg [3:0] last_press;
  always @(posedge clk)
    last_press <= press;

  // Starts at one: a technology without preset keeps its inverse.
  reg armed = 1'b1;
  always @(posedge clk)
    armed <= ~(door_blocked & was_moving_too) & (armed | press[0]);
  assign alarm = ~armed;
endmodule
