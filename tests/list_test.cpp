// The two readers of packed lists, which must accept the same bytes, and the built-in lists.
#include <kivparamstorage/EffectParamParser.h>
#include <ormel/SpatializerParamArray.h>

#include <cstring>
#include <regex>
#include <sstream>

#include "support/Documents.h"
#include "support/LogCapture.h"

namespace ormel::test {
namespace {

Values numbersOf(const std::string& text) {
    std::istringstream numbers(text);
    return {std::istream_iterator<int>(numbers), {}};
}

template <typename Parser>
struct ListTest : ::testing::Test {
    // What was said: "what#n" for what an entry lacks, "a/b" for a wrong count, else the text.
    std::string said() {
        const bool isEffect = std::is_same_v<Parser, EffectParamParser>;
        std::string all;
        for (const auto& [priority, tag, text] : log.take()) {
            EXPECT_EQ(tag, isEffect ? "EffectParamParser" : "OrmSpatializerParamParser");
            all += (priority == ANDROID_LOG_ERROR ? ", " : "no error ") + text;
        }
        const std::regex lacks("next\\(\\) failed to extract ([^,]*) for parameter #");
        const std::regex counts(
                "validate\\(\\) Expected (-?\\d+) parameters, found (\\d+) parameters\\.");
        return std::regex_replace(std::regex_replace(all, lacks, "$1#"), counts, "$1/$2");
    }
    LogCapture log;
};
using Parsers = ::testing::Types<SpatializerParamParser, EffectParamParser>;
TYPED_TEST_SUITE(ListTest, Parsers, );

// Words, 1 for a valid list, what validating says, and the entries: device, code, count, values. A
// list that is cut short in its last entry is valid all the same. A negative count moves backwards,
// wrapping at 32 bits, even to before the list; a positive one does not wrap.
constexpr char kReads[] = R"(
5 2 >0, device id#1, 2/1> | 5 2 2 >0, parameter id#1, 2/1> |
5 2 2 11 >0, number of values#1, 2/1> | 5 2 2 11 1 >0, 1 values#1, 2/1> |
5 2 2 11 1 7 >1, device id#2> 2 11 1 7 | 5 2 2 11 1 7 8 >1, parameter id#2> 2 11 1 7 |
5 2 2 11 1 7 8 12 >1, number of values#2> 2 11 1 7 | 5 2 2 11 1 7 8 12 0 >1> 2 11 1 7 8 12 0 |
0 3 2 11 0 8 12 2 5 >0, 2 values#2, 3/2> 2 11 0 | -1 1 1 11 2 -3 4 8 9 >1> 1 11 2 -3 4 |
0 0 >1> | 0 -1 2 11 0 >0, -1/0> | 0 2147483647 >0, device id#1, 2147483647/1> |
0 1 2 99 2 7 >1, 2 values#1> | 0 1 2 99 536870912 7 >1, 536870912 values#1> |
0 1 2 99 1073741823 7 >1, 1073741823 values#1> | 0 1 2 99 1073741824 7 >1, 1073741824 values#1> |
0 1 2 99 1073741825 7 >1, 1073741825 values#1> | 0 1 2 99 2147483647 7 >1, 2147483647 values#1> |
0 2 2 99 -1 42 1 77 >1> 2 99 -1 -1 42 1 77 | 0 3 2 99 -3 >1> 2 99 -3 2 99 -3 2 99 -3 |
0 2 2 99 -5 >1> 2 99 -5 0 2 2 99 -5 | 0 3 2 99 -6 >0, device id#2, 3/2> 2 99 -6 |
0 2 2 99 -2147483648 8 98 0 >1> 2 99 -2147483648 8 98 0 |
0 2 2 99 -1073741823 5 8 98 0 >1> 2 99 -1073741823 8 98 0 |
0 1 2 99 -1073741823 >1, -1073741823 values#1> | 0 2 2 99 -805306368 1
>0, -805306368 values#1, 2/1> | 0 2 2 99 -536870912 >1, device id#2> 2 99 -536870912|)"

        TYPED_TEST(ListTest, ReadsWhatThereIs) {
    std::istringstream cases(kReads);
    std::string parts[3];
    while (std::getline(cases, parts[0], '>') && std::getline(cases, parts[1], '>')) {
        std::getline(cases, parts[2], '|');
        const Values words = numbersOf(parts[0]);
        // A part of a word behind the list makes no difference. The buffer ends with it.
        for (size_t bytes = words.size() * 4; bytes < words.size() * 4 + 4; ++bytes) {
            SCOPED_TRACE(parts[0] + std::to_string(bytes));
            const auto buffer = std::make_unique<char[]>(bytes);
            std::memcpy(buffer.get(), words.data(), words.size() * 4);
            TypeParam parser(buffer.get(), static_cast<int>(bytes));
            const std::string valid = parser.validate() ? "1" : "0";
            EXPECT_EQ(valid + this->said(), parts[1]);
            Values read;
            for (parser.begin(); parser.next();) {
                const auto count = std::max(0, parser.mValueCount);
                read = join(read, Values{parser.mDeviceId, parser.mParamCode, parser.mValueCount},
                            Values(parser.mValues, parser.mValues + count));
            }
            EXPECT_EQ(read, numbersOf(parts[2]));
            this->log.take();
        }
    }
}

TYPED_TEST(ListTest, LeavesItsFieldsAsFarAsTheyWereRead) {
    Values words = {6, 3, 2, 11, 0, 8, 12, 1, 5, 3, 13, 9};
    TypeParam parser(words.data(), 48);
    EXPECT_TRUE(parser.begin() && parser.next());
    EXPECT_EQ(parser.mValues, &words[5]);
    EXPECT_TRUE(parser.next() && !parser.next());
    EXPECT_EQ(parser.mValues, &words[8]);
    EXPECT_EQ((Values{parser.mProfileId, parser.mParamCount, parser.mParamIndex, parser.mDeviceId,
                      parser.mParamCode, parser.mValueCount, parser.mOffset}),
              (Values{6, 3, 3, 3, 13, 9, 48}));
    EXPECT_EQ(this->said(), ", 9 values#3");
    const std::string lacksId = ", begin() failed to extract profile id";
    const std::string lacksCount = ", begin() failed to extract number of parameters";
    for (const int size : {7, 4, 3, 0, -1, INT32_MIN, 99}) {
        TypeParam none(size == 99 ? nullptr : words.data(), size);
        const std::string lacks = size == 7 || size == 4 ? lacksCount : lacksId;
        EXPECT_FALSE(none.begin() || none.next() || none.validate());
        EXPECT_EQ(this->said(),
                  lacks + lacks + ", validate() EFFECT_PARAM_PROFILE header is incorrect.");
        EXPECT_EQ(none.mProfileId, lacks == lacksId ? 0 : 6) << size;
    }
}

TEST(ParserBuffer, RefusesOnlyToMoveBeyondItsEnd) {
    Values words = {1, 2};
    ParserBuffer buffer(words.data(), 8);
    Values moves;
    for (const int bytes : {4, 5, 4, 1, 0, -12, INT32_MAX, 12, INT32_MAX, INT32_MIN}) {
        moves = join(moves, Values{buffer.skip(bytes) ? 1 : 0}, Values{buffer.mOffset});
    }
    Values expected = {1, 4, 0, 4, 1, 8, 0, 8, 1, 8, 1, -4, 0, -4, 1, 8, 1, -2147483641, 1, 7};
    EXPECT_EQ(moves, expected);
}

// The entries of "device:code values ...", in which lists have commas and the values of lists that
// are alike stand in columns, or in one for all. The device is hexadecimal, "@" for the one given.
std::vector<Call> entriesOf(const std::string& text, const std::string& device, int column) {
    std::vector<Call> entries;
    std::istringstream words(std::regex_replace(text, std::regex(",\n"), ","));
    int at = 0;
    for (std::string word; words >> word; ++at) {
        word = std::regex_replace(word, std::regex("@"), device);
        if (const size_t colon = word.find(':'); colon != std::string::npos) {
            entries.push_back(set(std::stoi(word, nullptr, 16), word.substr(colon + 1), {}));
            at = -1;
        } else if (at == 0 || at == column) {
            entries.back().values = numbersOf(std::regex_replace(word, std::regex(","), " "));
        }
    }
    return entries;
}

constexpr char kProfiles[] = R"(
40000000:mdle 1 0 0 0 40000000:miee 1 0 0 0 40000000:hvrc 103,32568,11164,5090,0,3,3,3
103,32568,11164,5090,0,1,2,2 103,32568,11164,5090,0,3,3,3 103,32568,11164,5090,0,1,1,1
2:ieon 1 0 1 0 2:mdee 1 1 0 1 2:deon 1 1 0 1 2:dea 2 4 0 4 2:dsb 64 88 64 0 2:vmb 64 64 32 64
8:ieon 1 0 1 0 8:mdee 1 1 0 1 8:deon 1 1 0 1 8:dea 2 4 0 4 8:dsb 0 0 0 0 8:vmb 16 16 0 16
80:ieon 1 0 1 0 80:mdee 1 1 0 1 80:deon 1 1 0 1 80:dea 2 4 0 4 80:dsb 0 0 0 0 80:vmb 16 16 0 16
4000:ieon 1 0 1 0 4000:mdee 1 1 0 1 4000:deon 1 1 0 1 4000:dea 2 4 0 4 4000:dsb 0 0 0 0
4000:vmb 16 16 0 16)";
constexpr char kForAllDevices[] = R"(
40000000:mave 0 40000000:msce 0 40000000:dvme 0 40000000:rvse 0 40000000:rvsa 0 40000000:sdfa 0
40000000:hlra 45 40000000:hvm 2 40000000:drcm 0)";
constexpr char kForOneDevice[] = R"(
@:iebs 20,47,141,234,328,469,656,844,1031,1313,1688,2250,3000,3750,4688,5813,7125,9000,11250,13875,
19688,157,167,218,218,203,188,192,192,205,213,218,209,193,159,134,97,71,22,-90,-283 @:iea 6 @:plb 0
@:ded 2 @:mvbe 0 @:ngon 1 @:dvle 0 @:dvla 0 @:dvli -256 @:dvlo -256 @:dom
1,0,1,15,24,16384,0,0,16384,11583,11583,8192,8192,16384,0,0,16384,16384,0,0,16384,16384,0,0,16384,
16384,0,0,16384,11,16,16384,0,0,16384,11583,11583,8192,8192,16384,0,0,16384,16384,0,0,16384,10,12,
16384,0,0,16384,11583,11583,8192,8192,16384,0,0,16384 1,1,2 @:vssd 4)";

TEST(BuiltInLists, AreTheseWordForWord) {
    using Array = SpatializerParamArray;
    std::vector<Call> entries = entriesOf(kForAllDevices, "", 0);
    for (const char* const device : {"2", "8", "80", "4000"}) {
        entries = join(entries, entriesOf(kForOneDevice, device, *device == '2' ? 0 : 1));
    }
    const auto expectList = [&entries](const auto& list, int32_t profile, int32_t count) {
        Values words = pack(entries);
        words[0] = profile;
        EXPECT_EQ(Values(list.begin(), list.end()), words);
        EXPECT_EQ(words[1], count);
        EffectParamParser parser(words.data(), static_cast<int>(sizeof(list)));
        EXPECT_TRUE(parser.validate() && parser.mOffset == parser.mSize);
    };
    expectList(Array::mCommonParams, -1, 57);
    const auto& movie = Array::mMovieProfileParams;
    const decltype(&movie) profiles[] = {&Array::mDynamicProfileParams, &movie,
                                         &Array::mMusicProfileParams, &Array::mCustomProfileParams};
    for (int profile = 0; profile < 4; ++profile) {
        entries = entriesOf(kProfiles, "", profile);
        expectList(*profiles[profile], profile, 27);
    }
}

}  // namespace
}  // namespace ormel::test
