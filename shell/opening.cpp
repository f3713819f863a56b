#include "shell/opening.h"

namespace velmoric {

std::string fileErrorText(const std::string& extension, const std::string& commandLine) {
    return extension + "#" + commandLine + "#Sorry a file error has occured." + "\n" +
           "Probably an incorrect file type or invalid picture file.";
}

std::string captionAfterOpen(std::string_view filePartCapitals, std::string_view decoderCaption) {
    return std::string(filePartCapitals) + " " + std::string(decoderCaption);
}

}  // namespace velmoric
