#include <iostream>

#include "host/HostCli.h"
#include "host/PluginServices.h"

int main(int argc, char** argv) {
  return VekHost::HostCli(VekHost::pluginServices(), std::cout, std::cerr).main(argc, argv);
}
