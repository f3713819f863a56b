#pragma once
// The texts an open leaves: the caption of a picture on show and the text of
// the box when a name has no decoder or its decoder rejects the file. Plain
// strings, no platform, so the browser page builds them with the same code.
#include <string>
#include <string_view>

namespace velmoric {

// The extension, the command line and the fixed two lines of the box.
std::string fileErrorText(const std::string& extension, const std::string& commandLine);

// The file part of the name in capitals, then the decoder's caption, which
// begins with a blank: two blanks stand between name and format.
std::string captionAfterOpen(std::string_view filePartCapitals, std::string_view decoderCaption);

}  // namespace velmoric
