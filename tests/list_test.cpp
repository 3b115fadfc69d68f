// The two readers of packed lists, which must accept the same bytes, and the built-in lists.
#include <kivparamstorage/EffectParamParser.h>
#include <ormel/SpatializerParamArray.h>

#include <cstring>
#include <sstream>

#include "support/Documents.h"

namespace ormel::test {
namespace {

template <typename Word>
std::vector<Word> wordsOf(const std::string& text) {
    std::istringstream words(text);
    return {std::istream_iterator<Word>(words), {}};
}

template <typename Parser>
struct ListTest : ::testing::Test {
    // Expects errors: " what #n" for what an entry lacks, " a b" for a wrong count, else the text.
    void expectSaid(const std::string& text) {
        const bool isEffect = std::is_same_v<Parser, EffectParamParser>;
        const char* const tag = isEffect ? "EffectParamParser" : "OrmSpatializerParamParser";
        std::vector<LogLine> lines;
        std::istringstream items(text);
        for (std::string item; std::getline(items, item, ',');) {
            const size_t blank = item.rfind(' ');
            if (item[blank + 1] == '#') {
                item.insert(blank, " for parameter").insert(0, "next() failed to extract");
            } else if (item[blank + 1] <= '9') {
                item.insert(blank, " parameters, found").insert(0, "validate() Expected");
                item += " parameters.";
            }
            lines.push_back(error(tag, item));
        }
        EXPECT_EQ(log.take(), lines);
    }
    LogCapture log;
};
using Parsers = ::testing::Types<SpatializerParamParser, EffectParamParser>;
TYPED_TEST_SUITE(ListTest, Parsers, );

// Words, 1 for a valid list, what validating says, and the entries: device, code, count, values. A
// list that is cut short in its last entry is valid all the same. A negative count moves backwards,
// wrapping at 32 bits, even to before the list; a positive one does not wrap.
constexpr char kReads[] = R"(
5 2>0 device id #1, 2 1>| 5 2 2>0 parameter id #1, 2 1>| 5 2 2 11>0 number of values #1, 2 1>|
5 2 2 11 1>0 1 values #1, 2 1>| 5 2 2 11 1 7>1 device id #2>2 11 1 7|
5 2 2 11 1 7 8>1 parameter id #2>2 11 1 7| 5 2 2 11 1 7 8 12>1 number of values #2>2 11 1 7|
5 2 2 11 1 7 8 12 0>1>2 11 1 7 8 12 0| 0 3 2 11 0 8 12 2 5>0 2 values #2, 3 2>2 11 0|
-1 1 1 11 2 -3 4 8 9>1>1 11 2 -3 4| 0 0>1>| 0 -1 2 11 0>0 -1 0>|
0 2147483647>0 device id #1, 2147483647 1>| 0 1 2 99 2 7>1 2 values #1>|
0 1 2 99 1073741823 7>1 1073741823 values #1>| 0 1 2 99 2147483647 7>1 2147483647 values #1>|
0 2 2 99 -1 42 1 77>1>2 99 -1 -1 42 1 77| 0 3 2 99 -3>1>2 99 -3 2 99 -3 2 99 -3|
0 2 2 99 -5>1>2 99 -5 0 2 2 99 -5| 0 3 2 99 -6>0 device id #2, 3 2>2 99 -6|
0 2 2 99 -2147483648 8 98 0>1>2 99 -2147483648 8 98 0|
0 2 2 99 -1073741823 5 8 98 0>1>2 99 -1073741823 8 98 0|
0 1 2 99 -1073741823>1 -1073741823 values #1>| 0 2 2 99 -805306368 1>0 -805306368 values #1, 2 1>)";

TYPED_TEST(ListTest, ReadsWhatThereIs) {
    std::istringstream cases(kReads);
    std::string parts[3];
    while (std::getline(cases, parts[0], '>') && std::getline(cases, parts[1], '>')) {
        std::getline(cases, parts[2], '|');
        const Values words = wordsOf<int>(parts[0]);
        // A part of a word behind the list makes no difference. The buffer ends with it.
        for (size_t bytes = words.size() * 4; bytes < words.size() * 4 + 4; ++bytes) {
            SCOPED_TRACE(parts[0] + std::to_string(bytes));
            const auto buffer = std::make_unique<char[]>(bytes);
            std::memcpy(buffer.get(), words.data(), words.size() * 4);
            TypeParam parser(buffer.get(), static_cast<int>(bytes));
            EXPECT_EQ(parser.validate(), parts[1][0] == '1');
            this->expectSaid(parts[1].substr(1));
            Values read;
            for (parser.begin(); parser.next();) {
                read.insert(read.end(), {parser.mDeviceId, parser.mParamCode, parser.mValueCount});
                std::copy_n(parser.mValues, parser.mValueCount, std::back_inserter(read));
            }
            EXPECT_EQ(read, wordsOf<int>(parts[2]));
            this->log.take();
        }
    }
}

TYPED_TEST(ListTest, LeavesItsFieldsAsFarAsTheyWereRead) {
    Values words = {6, 3, 2, 11, 0, 8, 12, 1, 5, 3, 13, 9};
    TypeParam parser(words.data(), 48);
    EXPECT_TRUE(parser.begin() && parser.next() && parser.mValues == &words[5]);
    EXPECT_TRUE(parser.next() && !parser.next() && parser.mValues == &words[8]);
    EXPECT_EQ((std::array{parser.mProfileId, parser.mParamCount, parser.mParamIndex,
                          parser.mDeviceId, parser.mParamCode, parser.mValueCount, parser.mOffset}),
              (std::array{6, 3, 3, 3, 13, 9, 48}));
    this->expectSaid(" 9 values #3");
    for (const int size : {36, 40, 44}) {
        TypeParam cut(words.data(), size);
        EXPECT_TRUE(cut.begin() && cut.next() && cut.next() && !cut.next());
        EXPECT_EQ((std::array{cut.mDeviceId, cut.mParamCode, cut.mValueCount, cut.mOffset}),
                  (std::array{size < 40 ? 8 : 3, size < 44 ? 12 : 13, 1, size}));
    }
    this->log.take();
    for (const int size : {7, 4, 3, 0, -1, INT32_MIN, 99}) {
        TypeParam none(size == 99 ? nullptr : words.data(), size);
        const bool hasId = size == 7 || size == 4;
        EXPECT_FALSE(none.begin() || none.next() || none.validate());
        EXPECT_EQ(none.mProfileId, hasId ? 6 : 0) << size;
        const std::string lacks = hasId ? "begin() failed to extract number of parameters,"
                                        : "begin() failed to extract profile id,";
        this->expectSaid(lacks + lacks + "validate() EFFECT_PARAM_PROFILE header is incorrect.");
    }
}

// Entries are as in listText(). Each headphone device has those with "@".
TEST(BuiltInLists, AreTheseWordForWord) {
    using Array = SpatializerParamArray;
    const auto expectList = [](const auto& list, const std::string& text) {
        const size_t split = text.find('@') - 1;
        std::string entries = text.substr(0, split);
        for (const std::string device : {"8", "128", "16384"}) {
            for (const char c : text.substr(split)) {
                entries += c == '@' ? device : std::string(1, c);
            }
        }
        EXPECT_EQ(wordsOf<std::string>(listText(list)), wordsOf<std::string>(entries));
        EXPECT_EQ(Array::getInstance().getProfileParamsSize(list[0]), list[0] < 0 ? 1824U : 468U);
        Values copy(list.size());
        EXPECT_EQ(Array::getInstance().getProfileParams(list[0], copy.data()), 0);
        EXPECT_EQ(copy, Values(list.begin(), list.end()));
        EffectParamParser parser(copy.data(), static_cast<int>(sizeof(list)));
        EXPECT_TRUE(parser.validate() && parser.mOffset == parser.mSize);
    };
    expectList(Array::mDynamicProfileParams, R"(0:list 27 all:mdle 1 all:miee 1 all:hvrc 103
32568 11164 5090 0 3 3 3 2:ieon 1 2:mdee 1 2:deon 1 2:dea 2 2:dsb 64 2:vmb 64 @:ieon 1 @:mdee 1
@:deon 1 @:dea 2 @:dsb 0 @:vmb 16)");
    expectList(Array::mMovieProfileParams, R"(1:list 27 all:mdle 0 all:miee 0 all:hvrc 103 32568
11164 5090 0 1 2 2 2:ieon 0 2:mdee 1 2:deon 1 2:dea 4 2:dsb 88 2:vmb 64 @:ieon 0 @:mdee 1
@:deon 1 @:dea 4 @:dsb 0 @:vmb 16)");
    expectList(Array::mMusicProfileParams, R"(2:list 27 all:mdle 0 all:miee 0 all:hvrc 103 32568
11164 5090 0 3 3 3 2:ieon 1 2:mdee 0 2:deon 0 2:dea 0 2:dsb 64 2:vmb 32 @:ieon 1 @:mdee 0
@:deon 0 @:dea 0 @:dsb 0 @:vmb 0)");
    expectList(Array::mCustomProfileParams, R"(3:list 27 all:mdle 0 all:miee 0 all:hvrc 103 32568
11164 5090 0 1 1 1 2:ieon 0 2:mdee 1 2:deon 1 2:dea 4 2:dsb 0 2:vmb 64 @:ieon 0 @:mdee 1 @:deon 1
@:dea 4 @:dsb 0 @:vmb 16)");
    expectList(Array::mCommonParams, R"(-1:list 57 all:mave 0 all:msce 0 all:dvme 0 all:rvse 0
all:rvsa 0 all:sdfa 0 all:hlra 45 all:hvm 2 all:drcm 0 2:iebs 20 47 141 234 328 469 656 844 1031
1313 1688 2250 3000 3750 4688 5813 7125 9000 11250 13875 19688 157 167 218 218 203 188 192 192
205 213 218 209 193 159 134 97 71 22 -90 -283 2:iea 6 2:plb 0 2:ded 2 2:mvbe 0 2:ngon 1 2:dvle 0
2:dvla 0 2:dvli -256 2:dvlo -256 2:dom 1 0 1 15 24 16384 0 0 16384 11583 11583 8192 8192 16384 0
0 16384 16384 0 0 16384 16384 0 0 16384 16384 0 0 16384 11 16 16384 0 0 16384 11583 11583 8192
8192 16384 0 0 16384 16384 0 0 16384 10 12 16384 0 0 16384 11583 11583 8192 8192 16384 0 0 16384
2:vssd 4 @:iebs 20 47 141 234 328 469 656 844 1031 1313 1688 2250 3000 3750 4688 5813 7125 9000
11250 13875 19688 157 167 218 218 203 188 192 192 205 213 218 209 193 159 134 97 71 22 -90 -283
@:iea 6 @:plb 0 @:ded 2 @:mvbe 0 @:ngon 1 @:dvle 0 @:dvla 0 @:dvli -256 @:dvlo -256 @:dom 1 1 2
@:vssd 4)");
}

}  // namespace
}  // namespace ormel::test
