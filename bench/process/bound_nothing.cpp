// The bound of every process: the C++ library is there and nothing is done with it. Linked twice, with and without shared
// libraries.
#include <iostream>

int main() {}
