#include <gtest/gtest.h>
#include <zlib.h>

#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

#include "norv/environment.hpp"
#include "norv/readers/mutation.hpp"
#include "readers/lp_reader.hpp"
#include "readers/mps_model.hpp"
#include "readers/mps_reader.hpp"
#include "readers/read_error.hpp"

namespace norv::test {
namespace {

const std::string everySection =
    "NAME          all sections\n"
    "OBJSENSE MAX\n"
    "ROWS\n N  cost\n L  c1\n G  c2\n E  c3\n N  free\n"
    "COLUMNS\n"
    "    x         cost                 1   c1                 -2\n"
    "    M1        'MARKER'                 'INTORG'\n"
    "    y         cost               1e1   c2               .5D1\n"
    "    M2        'MARKER'                 'INTEND'\n"
    "    z         c3                   1\n"
    "RHS\n    RHS       cost                 4   c1                  7\n"
    "RANGES\n    RNG       c1                   3   c3                 -2\n"
    "BOUNDS\n LO BND       x                   -5\n UP BND       x                    5\n"
    " BV BND       y\n SC BND       z                    9\n"
    "QUADOBJ\n    x         x                    2\n"
    "QCMATRIX c2\n    x         z                    1\n    z         x                    1\n"
    "SOS\n S1 s\n    z         1\n    x         2\n"
    "SOS2\n t z 1\n t x 2\n t y 3\n"
    "ENDATA\n";

const std::string everyLpPart =
    "\\ all parts\nMax\n o: 2 x + 3y - [ x^2 + 2 x * y ] / 2 + 5\nSubject To\n a: x + y <= 1e1\n "
    "-2 <= "
    "x - z <= 8\n q: [ x ^ 2 ] + z[1] >= -4\nBounds\n x <= 4\n -inf <= y <= 5\n z free\nGeneral\n "
    "y\nBinary\n b\nSemi-Continuous\n x\nSOS\n s: S1:: x:1 y:2\n t: S2:: z:1 y:2 x:3\nEnd\n";

/// @return whether a model came out; otherwise the complaint is one line that starts with the path.
bool endsInAModelOrOneLine(const std::string& content) {
    try {
        const InputText text = InputText::fromMemory("m", content);
        ModelBuilder builder;
        if (looksLikeLp(text.text())) {
            readLp(text, builder);
        } else {
            buildModel(readMps(text), builder);
        }
        const Environment environment;
        const Model model = builder.finish(environment);
        return model.nbVariables() > 0;
    } catch (const ReadError& error) {
        const std::string line = error.what();
        EXPECT_EQ(line.rfind("m:", 0), 0U) << line;
        EXPECT_EQ(line.find('\n'), std::string::npos) << line;
        return false;
    }
}

std::string gzipped(const std::string& content) {
    z_stream stream = {};
    constexpr int gzipFormat = 15 + 16;
    deflateInit2(&stream, 9, Z_DEFLATED, gzipFormat, 8, Z_DEFAULT_STRATEGY);
    std::string packed(deflateBound(&stream, static_cast<uLong>(content.size())), '\0');
    std::string source = content;
    stream.next_in = reinterpret_cast<Bytef*>(source.data());
    stream.avail_in = static_cast<uInt>(source.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    deflate(&stream, Z_FINISH);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return packed;
}

void mutate(const std::string& content, std::uint32_t seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    endsInAModelOrOneLine(mutated(content, seed));
}

TEST(DamagedInput, everyTruncationEndsInAModelOrOneLine) {
    ASSERT_TRUE(endsInAModelOrOneLine(everySection));
    const std::size_t complete = everySection.rfind("ENDATA") + 6;
    for (std::size_t length = 0; length < complete; ++length) {
        EXPECT_FALSE(endsInAModelOrOneLine(everySection.substr(0, length))) << length;
    }
}

TEST(DamagedInput, everyMutationEndsInAModelOrOneLine) {
    for (std::uint32_t seed = 1; seed <= 4000; ++seed) mutate(everySection, seed);
    ASSERT_TRUE(endsInAModelOrOneLine(everyLpPart));
    for (std::uint32_t seed = 1; seed <= 4000; ++seed) mutate(everyLpPart, seed);
}

TEST(DamagedInput, everyTruncationAndMutationOfGzipIsReported) {
    const std::string packed = gzipped(everySection);
    EXPECT_TRUE(endsInAModelOrOneLine(packed));
    for (std::size_t length = 2; length < packed.size(); ++length) {
        EXPECT_FALSE(endsInAModelOrOneLine(packed.substr(0, length))) << length;
    }
    for (std::uint32_t seed = 1; seed <= 500; ++seed) mutate(packed, seed);
}

TEST(InputText, joinsGzipMembersAndRefusesWhatFollows) {
    const std::string half = everySection.substr(0, 200);
    const std::string both = gzipped(half) + gzipped(everySection.substr(200));
    EXPECT_EQ(InputText::fromMemory("m", both).text(), everySection);
    EXPECT_THROW(InputText::fromMemory("m", both + "more"), ReadError);
}

TEST(InputText, readsFilesByContentAndNamesUnreadableOnes) {
    const std::string path = testing::TempDir() + "plain_name.mps";
    std::ofstream(path, std::ios::binary) << gzipped(everySection);
    EXPECT_EQ(InputText::fromFile(path).text(), everySection);
    EXPECT_THROW(InputText::fromFile(testing::TempDir()), ReadError);
    EXPECT_THROW(InputText::fromFile(path + ".none"), ReadError);
}

}  // namespace
}  // namespace norv::test
