// Random and truncated files of every extension, opened one after another in
// one viewer: each ends in a picture or in a message, and a message leaves
// the previous picture on show.
#include "viewer_fixture.h"

using namespace velmoric;

namespace {

// Lengths around the sizes the formats use, and some that fit none.
constexpr std::size_t kLengths[] = {0, 1, 3, 34, 129, 513, 4097, 32033, 32034, 32128, 51104, 70000};

using Robustness = vtest::ViewerTest;

TEST_F(Robustness, EveryExtensionSurvivesRandomAndTruncatedFiles) {
    std::uint32_t seed = 1;
    int pictures = 0;
    for (const Format& f : formatTable())
        for (std::size_t length : kLengths)
            for (bool zeros : {false, true}) {
                const std::string name = "f" + std::to_string(++seed) + "." + std::string(f.lower);
                const auto before = snapshot();
                const std::size_t messages = ui.messages.size();
                openFile(name, zeros ? vtest::Bytes(length, 0) : vtest::randomBytes(length, seed));
                SCOPED_TRACE(name);
                ASSERT_TRUE(ui.allCommandsEnabled());
                if (ui.messages.size() == messages) {
                    ++pictures;
                    EXPECT_EQ(ui.label.find(std::string(f.upper)), ui.label.find('.') + 1) << ui.label;
                } else {
                    EXPECT_EQ(ui.messages.size(), messages + 1);
                    EXPECT_TRUE(snapshot() == before);
                }
            }
    // The Spectrum length test and the Tiny resolution byte refuse files.
    EXPECT_GT(pictures, 0);
    EXPECT_FALSE(ui.messages.empty());
}

}  // namespace
