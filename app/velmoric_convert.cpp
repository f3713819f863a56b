// velmoric-convert: the viewer's decoders on the command line.
#include <iostream>
#include <string>
#include <vector>

#include "platform/files.h"
#include "convert/convert.h"

int main(int argc, char** argv) {
    std::vector<std::string> args(argv + 1, argv + argc);
    return velmoric::runConvert(args, std::cout, std::cerr, velmoric::files::isTerminal(2));
}
