#pragma once
// velmoric-convert: decodes picture files to Windows bitmaps, PNG or GIF files
// without a window. Every file starts from a fresh state, so its output
// depends on that file alone, whatever the order or the number of workers.
#include <cstdint>
#include <string_view>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "cycles/cycles.h"

namespace velmoric {

struct Staging;

enum class OutputFormat { Bmp, Png, Gif };

struct ConvertOptions {
    std::string outputFolder;  // empty: beside each source
    OutputFormat format = OutputFormat::Bmp;
    int jobs = 0;              // 0: one for each core
    bool recursive = false;
    bool info = false;
    bool quiet = false;
    std::vector<std::string> inputs;
};

// The decode of one file from a fresh state.
struct FileDecode {
    bool ok = false;
    std::string reason;     // why not, when !ok
    std::string caption;    // the decoder's caption, leading blank included
    int kind = 0;
    int width = 0, height = 0;
    std::vector<std::uint8_t> bitmap;  // the bytes of the temporary bitmap
    std::vector<cycles::Frame> frames;  // colour cycles of one period, when asked for
};

// Staging arrays that decode every file from the state of a fresh start,
// reused from file to file: only what a decode can leave behind is cleared.
class FreshStaging {
public:
    FreshStaging();
    ~FreshStaging();
    FileDecode decode(const std::string& path);
    // The same without a copy of the bitmap, which `bitmap` shows in the
    // staging arrays until the next decode.
    // With `withCycles`, the frames of the picture's colour cycles too.
    FileDecode decodeInPlace(const std::string& path, std::span<const std::uint8_t>& bitmap, bool withCycles = false);

private:
    std::unique_ptr<Staging> staging_;
    bool used_ = false;
};

// The decode of one file in staging arrays of its own.
FileDecode decodeFile(const std::string& path);

// Parses the arguments after the program name; nullopt and a message added
// to `err` for bad usage.
std::optional<ConvertOptions> parseConvertArgs(const std::vector<std::string>& args, std::string& err);

// Where the converter's messages go: the program's standard output and error,
// or strings. No iostreams: building their locale would cost a one-file
// conversion a fifth of its time.
class Console {
public:
    virtual ~Console() = default;
    virtual void out(std::string_view text) = 0;  // --info lines
    virtual void err(std::string_view text) = 0;  // errors and the progress line
    virtual bool errIsTerminal() const { return false; }
};

struct StringConsole : Console {
    std::string outText, errText;
    void out(std::string_view text) override { outText += text; }
    void err(std::string_view text) override { errText += text; }
};

std::string convertUsage();

// Runs a whole conversion. Returns the exit status: 0 all converted, 1 any
// failed (or a folder held no picture), 2 bad usage or inputs that would
// write the same output, refused before any work.
int runConvert(const std::vector<std::string>& args, Console& console);

}  // namespace velmoric
