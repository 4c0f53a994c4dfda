// The source model of the grid's logic tests, shared with the widget tests of the grid.
#include "../grid/support_grid.cpp"
