#include <vqcj.h>
#include <cstdio>
int main() { std::printf("%s\n", vqcjGetLibVersion()->version); }
