// Prints the small-letter extension of every row of the table of formats, one
// a line, in the table's order.
#include <cstdio>

#include "formats/formats.h"

int main() {
    for (const velmoric::Format& f : velmoric::formatTable())
        std::printf("%.*s\n", int(f.lower.size()), f.lower.data());
    return 0;
}
