// Every file of the shared corpus and of the synthetic set, decoded from a
// fresh state by the converter, against the outcome, bitmap hash, kind and
// caption that an independent decoder of the same rules gives for it.
#include <openssl/evp.h>

#include <fstream>
#include <sstream>

#include "support.h"
#include "convert/convert.h"

namespace {

namespace fs = std::filesystem;

struct Expected {
    std::string file, outcome, sha256, kind, caption;
};

std::string sha256Hex(const std::vector<std::uint8_t>& bytes) {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned length = 0;
    EVP_Digest(bytes.data(), bytes.size(), digest, &length, EVP_sha256(), nullptr);
    static const char* hex = "0123456789abcdef";
    std::string out;
    for (unsigned i = 0; i < length; ++i) {
        out += hex[digest[i] >> 4];
        out += hex[digest[i] & 15];
    }
    return out;
}

// Rows of a tab-separated table: file, bytes, outcome, sha256, kind, caption.
std::vector<Expected> readTable(const fs::path& tsv) {
    std::vector<Expected> rows;
    std::ifstream in(tsv);
    std::string line;
    std::getline(in, line);  // the column names
    while (std::getline(in, line)) {
        std::vector<std::string> cols;
        std::stringstream ss(line);
        std::string col;
        while (std::getline(ss, col, '\t')) cols.push_back(col);
        if (cols.size() < 5) continue;
        cols.resize(6);
        rows.push_back({cols[0], cols[2], cols[3], cols[4], cols[5]});
    }
    return rows;
}

// What differs between a decode and its row, or empty when nothing does.
std::string difference(const Expected& e, const velmoric::FileDecode& d) {
    const std::string outcome = d.ok ? "picture" : "rejected";
    if (outcome != e.outcome) return "outcome " + outcome + " (" + d.reason + "), expected " + e.outcome;
    if (!d.ok) return {};
    std::string why;
    if (sha256Hex(d.bitmap) != e.sha256) why += " bitmap hash";
    if (std::to_string(d.kind) != e.kind) why += " kind " + std::to_string(d.kind) + " != " + e.kind;
    if (d.caption != e.caption) why += " caption '" + d.caption + "' != '" + e.caption + "'";
    return why;
}

// With `batch`, every file goes through one staging block that the converter
// reuses and clears between files, which must give what a fresh one gives.
void checkTable(const fs::path& folder, const fs::path& tsv, bool batch = false) {
    if (!fs::exists(tsv)) GTEST_SKIP() << "no " << tsv;
    const std::vector<Expected> rows = readTable(tsv);
    ASSERT_FALSE(rows.empty()) << tsv;
    std::vector<std::string> differing;
    velmoric::FreshStaging reused;
    for (const Expected& e : rows) {
        const std::string path = (folder / e.file).string();
        const std::string why = difference(e, batch ? reused.decode(path) : velmoric::decodeFile(path));
        if (!why.empty()) differing.push_back(e.file + ":" + why);
    }
    for (const std::string& d : differing) ADD_FAILURE() << d;
    EXPECT_TRUE(differing.empty()) << differing.size() << " of " << rows.size() << " files differ";
}

fs::path sharedDir() { return vtest::corpusDir().parent_path(); }

TEST(ExpectedBitmaps, EveryCorpusPicture) { checkTable(sharedDir() / "corpus", sharedDir() / "expected/corpus.tsv"); }

TEST(ExpectedBitmaps, EverySyntheticPicture) {
    checkTable(sharedDir() / "synthetic", sharedDir() / "synthetic/EXPECTED.tsv");
}

TEST(ExpectedBitmaps, BothTablesThroughOneReusedStagingBlock) {
    checkTable(sharedDir() / "synthetic", sharedDir() / "synthetic/EXPECTED.tsv", true);
    checkTable(sharedDir() / "corpus", sharedDir() / "expected/corpus.tsv", true);
}

}  // namespace
