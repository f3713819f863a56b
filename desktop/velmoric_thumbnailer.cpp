// velmoric-thumbnailer [-s SIZE] FILE OUTPUT: the thumbnailer the desktop's
// file managers start through velmoric.thumbnailer.
#include <iostream>

#include "desktop/thumbnail.h"

int main(int argc, char** argv) { return velmoric::desktop::runThumbnailer(argc, argv, std::cerr); }
