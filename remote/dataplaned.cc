#include <iostream>

#include "remote/DaemonCli.h"

int main(int argc, char** argv) { return Remote::DaemonCli(std::cout, std::cerr).main(argc, argv); }
