// The lower bound of every process: a program that uses the C++ library and does nothing. Linked twice, with and without shared
// libraries.
#include <iostream>

int main() {}
