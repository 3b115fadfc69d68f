// The two readers of packed lists, which must accept the same lists, and the built-in lists.
#include <kivparamstorage/EffectParamParser.h>
#include <ormel/SpatializerParamArray.h>

#include <algorithm>
#include <sstream>

#include "support/Documents.h"

namespace ormel::test {
namespace {

template <typename Parser>
struct ListTest : ::testing::Test {
    void expectErrors(const std::vector<std::string>& messages) {
        const bool isEffect = std::is_same_v<Parser, EffectParamParser>;
        std::vector<LogLine> lines;
        for (const std::string& message : messages) {
            lines.push_back(
                    error(isEffect ? "EffectParamParser" : "OrmSpatializerParamParser", message));
        }
        EXPECT_EQ(log.take(), lines);
    }
    LogCapture log;
};
using Parsers = ::testing::Types<SpatializerParamParser, EffectParamParser>;
TYPED_TEST_SUITE(ListTest, Parsers, );

std::string lacks(const std::string& what, int entry) {
    return "next() failed to extract " + what + " for parameter #" + std::to_string(entry);
}

std::string counts(int expected, int found) {
    return "validate() Expected " + std::to_string(expected) + " parameters, found " +
           std::to_string(found) + " parameters.";
}

const std::string kNoProfile = "begin() failed to extract profile id";
const std::string kNoCount = "begin() failed to extract number of parameters";
const std::string kNoHeader = "validate() EFFECT_PARAM_PROFILE header is incorrect.";

// A list with a truncated last entry is still valid. A negative count moves backwards, wrapping at
// 32 bits, even to before the list; a positive one does not wrap.
// clang-format off
const struct {
    Values words;    // profile, number of entries, and each entry's device, code, count and values
    Values entries;  // the entries that are read
    bool isValid;
    std::vector<std::string> errors;
} kReads[] = {
    {{},                                        {},                             false, {kNoProfile, kNoHeader}},
    {{5},                                       {},                             false, {kNoCount, kNoHeader}},
    {{5, 2},                                    {},                             false, {lacks("device id", 1), counts(2, 1)}},
    {{5, 2, 2},                                 {},                             false, {lacks("parameter id", 1), counts(2, 1)}},
    {{5, 2, 2, 11},                             {},                             false, {lacks("number of values", 1), counts(2, 1)}},
    {{5, 2, 2, 11, 1},                          {},                             false, {lacks("1 values", 1), counts(2, 1)}},
    {{5, 2, 2, 11, 1, 7},                       {2, 11, 1, 7},                  true,  {lacks("device id", 2)}},
    {{5, 2, 2, 11, 1, 7, 8},                    {2, 11, 1, 7},                  true,  {lacks("parameter id", 2)}},
    {{5, 2, 2, 11, 1, 7, 8, 12},                {2, 11, 1, 7},                  true,  {lacks("number of values", 2)}},
    {{5, 2, 2, 11, 1, 7, 8, 12, 0},             {2, 11, 1, 7, 8, 12, 0},        true,  {}},
    {{0, 3, 2, 11, 0, 8, 12, 2, 5},             {2, 11, 0},                     false, {lacks("2 values", 2), counts(3, 2)}},
    {{-1, 1, 1, 11, 2, -3, 4, 8, 9},            {1, 11, 2, -3, 4},              true,  {}},  // Words after the last entry.
    {{0, 0},                                    {},                             true,  {}},
    {{0, -1, 2, 11, 0},                         {},                             false, {counts(-1, 0)}},
    {{0, INT32_MAX},                            {},                             false, {lacks("device id", 1), counts(INT32_MAX, 1)}},
    {{0, 1, 2, 99, 2, 7},                       {},                             true,  {lacks("2 values", 1)}},
    {{0, 1, 2, 99, 0x3fffffff, 7},              {},                             true,  {lacks("1073741823 values", 1)}},
    {{0, 1, 2, 99, INT32_MAX, 7},               {},                             true,  {lacks("2147483647 values", 1)}},
    {{0, 2, 2, 99, -1, 42, 1, 77},              {2, 99, -1, -1, 42, 1, 77},     true,  {}},
    {{0, 3, 2, 99, -3},                         {2, 99, -3, 2, 99, -3, 2, 99, -3}, true, {}},
    {{0, 2, 2, 99, -5},                         {2, 99, -5, 0, 2, 2, 99, -5},   true,  {}},
    {{0, 3, 2, 99, -6},                         {2, 99, -6},                    false, {lacks("device id", 2), counts(3, 2)}},
    {{0, 2, 2, 99, INT32_MIN, 8, 98, 0},        {2, 99, INT32_MIN, 8, 98, 0},   true,  {}},  // By 0 bytes.
    {{0, 2, 2, 99, -0x3fffffff, 5, 8, 98, 0},   {2, 99, -0x3fffffff, 8, 98, 0}, true,  {}},  // By 4 bytes.
    {{0, 1, 2, 99, -0x3fffffff},                {},                             true,  {lacks("-1073741823 values", 1)}},
    {{0, 2, 2, 99, -0x30000000, 1},             {},                             false, {lacks("-805306368 values", 1), counts(2, 1)}},
};
// clang-format on

TYPED_TEST(ListTest, ReadsEntriesUpToATruncatedOne) {
    for (const auto& [words, entries, isValid, errors] : kReads) {
        // Part of a word after the list changes nothing. The buffer ends right after it.
        for (size_t bytes = words.size() * 4; bytes < words.size() * 4 + 4; ++bytes) {
            SCOPED_TRACE(::testing::PrintToString(words) + std::to_string(bytes));
            const auto buffer = std::make_unique<char[]>(bytes);
            const auto* const begin = reinterpret_cast<const char*>(words.data());
            std::copy_n(begin, words.size() * 4, buffer.get());
            TypeParam parser(buffer.get(), static_cast<int>(bytes));
            EXPECT_EQ(parser.validate(), isValid);
            this->expectErrors(errors);
            Values read;
            for (parser.begin(); parser.next();) {
                read.insert(read.end(), {parser.mDeviceId, parser.mParamCode, parser.mValueCount});
                std::copy_n(parser.mValues, parser.mValueCount, std::back_inserter(read));
            }
            EXPECT_EQ(read, entries);
            this->log.take();
        }
    }
}

TYPED_TEST(ListTest, KeepsTheFieldsReadSoFar) {
    Values words = {6, 3, 2, 11, 0, 8, 12, 1, 5, 3, 13, 9};
    TypeParam parser(words.data(), 48);
    EXPECT_TRUE(parser.begin());
    for (const int32_t* const values : {&words[5], &words[8]}) {
        EXPECT_TRUE(parser.next());
        EXPECT_EQ(parser.mValues, values);
    }
    EXPECT_FALSE(parser.next());
    this->expectErrors({lacks("9 values", 3)});
    EXPECT_EQ(parser.mValues, &words[8]);
    EXPECT_EQ(parser.mProfileId, 6);
    EXPECT_EQ(parser.mParamCount, 3);
    EXPECT_EQ(parser.mParamIndex, 3);
    const struct {
        int size, device, code, count;
    } cases[] = {{36, 8, 12, 1}, {40, 3, 12, 1}, {44, 3, 13, 1}, {48, 3, 13, 9}};
    for (const auto& [size, device, code, count] : cases) {
        TypeParam cut(words.data(), size);
        for (cut.begin(); cut.next();) {
        }
        EXPECT_EQ(cut.mDeviceId, device) << size;
        EXPECT_EQ(cut.mParamCode, code) << size;
        EXPECT_EQ(cut.mValueCount, count) << size;
        EXPECT_EQ(cut.mOffset, size);
    }
}

TYPED_TEST(ListTest, IsEmptyForANegativeSizeOrNullData) {
    Values words = {6, 0};
    for (const int size : {-1, INT32_MIN, 99}) {
        TypeParam parser(size == 99 ? nullptr : words.data(), size);
        EXPECT_FALSE(parser.begin());
        EXPECT_FALSE(parser.next());
        EXPECT_EQ(parser.mProfileId, 0);
        this->expectErrors({kNoProfile});
    }
}

std::vector<std::string> wordsOf(const std::string& text) {
    std::istringstream words(text);
    return {std::istream_iterator<std::string>(words), {}};
}

/** @param text the list as from listText(), entries with "@" for each of the headphone devices */
template <typename List>
void expectList(const List& list, const std::string& text) {
    const size_t split = text.find('@') - 1;
    std::string entries = text.substr(0, split);
    for (const std::string device : {"8", "128", "16384"}) {
        for (const char c : text.substr(split)) {
            entries += c == '@' ? device : std::string(1, c);
        }
    }
    EXPECT_EQ(wordsOf(listText(list)), wordsOf(entries));
    SpatializerParamArray& array = SpatializerParamArray::getInstance();
    EXPECT_EQ(array.getProfileParamsSize(list[0]), sizeof(list));
    Values copy(list.size());
    EXPECT_EQ(array.getProfileParams(list[0], copy.data()), 0);
    EXPECT_EQ(copy, Values(list.begin(), list.end()));
    EffectParamParser parser(copy.data(), static_cast<int>(sizeof(list)));
    EXPECT_TRUE(parser.validate());
    EXPECT_EQ(parser.mOffset, parser.mSize);
}

TEST(BuiltInLists, AreUnchangedWordForWord) {
    using Array = SpatializerParamArray;
    EXPECT_EQ(sizeof(Array::mCommonParams), 1824U);
    EXPECT_EQ(sizeof(Array::mCustomProfileParams), 468U);
    expectList(Array::mDynamicProfileParams, R"(0:list 27
all:mdle 1 all:miee 1 all:hvrc 103 32568 11164 5090 0 3 3 3
2:ieon 1 2:mdee 1 2:deon 1 2:dea 2 2:dsb 64 2:vmb 64
@:ieon 1 @:mdee 1 @:deon 1 @:dea 2 @:dsb 0 @:vmb 16)");
    expectList(Array::mMovieProfileParams, R"(1:list 27
all:mdle 0 all:miee 0 all:hvrc 103 32568 11164 5090 0 1 2 2
2:ieon 0 2:mdee 1 2:deon 1 2:dea 4 2:dsb 88 2:vmb 64
@:ieon 0 @:mdee 1 @:deon 1 @:dea 4 @:dsb 0 @:vmb 16)");
    expectList(Array::mMusicProfileParams, R"(2:list 27
all:mdle 0 all:miee 0 all:hvrc 103 32568 11164 5090 0 3 3 3
2:ieon 1 2:mdee 0 2:deon 0 2:dea 0 2:dsb 64 2:vmb 32
@:ieon 1 @:mdee 0 @:deon 0 @:dea 0 @:dsb 0 @:vmb 0)");
    expectList(Array::mCustomProfileParams, R"(3:list 27
all:mdle 0 all:miee 0 all:hvrc 103 32568 11164 5090 0 1 1 1
2:ieon 0 2:mdee 1 2:deon 1 2:dea 4 2:dsb 0 2:vmb 64
@:ieon 0 @:mdee 1 @:deon 1 @:dea 4 @:dsb 0 @:vmb 16)");
    expectList(Array::mCommonParams, R"(-1:list 57
all:mave 0 all:msce 0 all:dvme 0 all:rvse 0 all:rvsa 0 all:sdfa 0 all:hlra 45 all:hvm 2 all:drcm 0
2:iebs 20 47 141 234 328 469 656 844 1031 1313 1688 2250 3000 3750 4688 5813 7125 9000 11250 13875
19688 157 167 218 218 203 188 192 192 205 213 218 209 193 159 134 97 71 22 -90 -283
2:iea 6 2:plb 0 2:ded 2 2:mvbe 0 2:ngon 1 2:dvle 0 2:dvla 0 2:dvli -256 2:dvlo -256
2:dom 1 0 1 15 24 16384 0 0 16384 11583 11583 8192 8192 16384 0 0 16384 16384 0 0 16384 16384 0 0
16384 16384 0 0 16384 11 16 16384 0 0 16384 11583 11583 8192 8192 16384 0 0 16384 16384 0 0 16384
10 12 16384 0 0 16384 11583 11583 8192 8192 16384 0 0 16384
2:vssd 4
@:iebs 20 47 141 234 328 469 656 844 1031 1313 1688 2250 3000 3750 4688 5813 7125 9000 11250 13875
19688 157 167 218 218 203 188 192 192 205 213 218 209 193 159 134 97 71 22 -90 -283
@:iea 6 @:plb 0 @:ded 2 @:mvbe 0 @:ngon 1 @:dvle 0 @:dvla 0 @:dvli -256 @:dvlo -256 @:dom 1 1 2
@:vssd 4)");
}

}  // namespace
}  // namespace ormel::test
