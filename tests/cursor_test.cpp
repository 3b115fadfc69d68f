// The cursor over an XML document, and the reading of numbers.
#include <dlfcn.h>
#include <libxml/parser.h>
#include <ormel/TagIterator.h>

#include "support/Store.h"

namespace {

int gCleanups = 0;
bool gRootless = false;

template <typename Function>
Function* nextDefinition(Function*, const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

// These stand before libxml2's own for the whole process: one to be counted, the other to give a
// document without a root, which libxml2 takes for malformed before it comes to that.
extern "C" void xmlCleanupParser() {
    ++gCleanups;
    nextDefinition(&xmlCleanupParser, __func__)();
}

extern "C" xmlNodePtr xmlDocGetRootElement(const xmlDoc* document) {
    return gRootless ? nullptr : nextDefinition(&xmlDocGetRootElement, __func__)(document);
}

namespace ormel::test {
namespace {

using ::testing::ElementsAre;
using Ints = std::vector<int>;
using Strings = std::vector<std::string>;
using LogLines = std::vector<LogLine>;

const LogLine kNoNode = error("TagIterator", "Invalid node when parsing String vector.");
const LogLine kEmptyStack = error("TagIterator", "It's empty in node stack!");

/** The current node's name and what it is: an element, with children, with a next sibling. */
std::string describe(TagIterator& iterator) {
    const std::string text = iterator.getNodeName() + (iterator.isElementNode() ? ":E" : ":") +
                             (iterator.isChildrenValid() ? "C" : "") +
                             (iterator.isNextValid() ? "N" : "");
    return iterator.isCurValid() ? text : "-" + text.substr(1);
}

/** Where the cursor comes by: n next, c first child, < remembers, > returns, 0 frees, 1 loads. */
std::string walk(const std::string& document, const std::string& steps) {
    const std::map<char, void (TagIterator::*)()> moves = {{'n', &TagIterator::next},
                                                           {'c', &TagIterator::childrenNext},
                                                           {'<', &TagIterator::pushNode},
                                                           {'>', &TagIterator::popNode},
                                                           {'0', &TagIterator::clearAll}};
    TagIterator iterator;
    std::string trace;
    for (const char step : "1" + steps) {
        if (step == '1') {
            EXPECT_EQ(iterator.init(document, true), 0);
        } else {
            (iterator.*moves.at(step))();
        }
        trace += " " + describe(iterator);
    }
    return trace;
}

TEST(TagIterator, Walks) {
    const std::string indented = "<a>\n<b>\n<c/>\n<d>x</d>\n</b>\n<!--k--><e/></a>";
    const std::string rare = "<!DOCTYPE a [<!ENTITY x 'y'>]><a><?pi b?><![CDATA[c]]>&x;</a>";
    const std::tuple<std::string, const char*, const char*, LogLines> cases[] = {
            {indented, "nnnnnnc", " text:N b:ECN text:N comment:N e:E - - -", {}},
            {indented, "nccnnc", " text:N b:ECN c:EN c:EN text:N d:ECN -", {}},
            {indented, "c", " text:N text:N", {}},
            {indented, "n<cnn>n", " text:N b:ECN b:ECN c:EN text:N d:ECN b:ECN text:N", {}},
            {indented,
             "<n<n>>>",
             " text:N text:N b:ECN b:ECN text:N b:ECN text:N text:N",
             {kEmptyStack}},
            {"<a><b/></a>", "cn<1>>", " b:E b:E - - b:E - -", {kEmptyStack}},
            {"<a><b/></a>", "<<0>1>>", " b:E b:E b:E - - b:E - -", {kEmptyStack}},
            {"<a><b><c/><d/></b></a>", "c", " b:EC d:E", {}},
            {"<a/>", "nc", " - - -", {}},
            {rare, "nn", " pi:N :N x:C", {}}};
    LogCapture log;
    for (const auto& [document, steps, trace, messages] : cases) {
        EXPECT_EQ(walk(document, steps), trace) << steps << " in " << document;
        EXPECT_EQ(log.take(), messages) << steps << " in " << document;
    }
}

TEST(TagIterator, ReadsAttributes) {
    const std::tuple<std::string, Strings, Strings, Strings, Ints> cases[] = {
            {"<b y='5' z='7'/>", {"y", "z"}, {"5", "7"}, {"", "5"}, {5, 7}},
            {"<b p='3' q='oops' r='-4'/>", {"p", "q", "r"}, {"3", "oops", "-4"}, {"", ""}, {3, 0, -4}},
            {"<b X='1' y='' x='2'/>", {"X", "y", "x"}, {"1", "", "2"}, {"2", ""}, {1, 0, 2}},
            {"<b x='1&amp;2&#10;'/>", {"x"}, {"1&2\n"}, {"1&2\n", ""}, {1}},
            // Text is found by local name, so the first of two attributes speaks for both.
            {"<b xmlns:n='u' n:x='1' x='2'/>", {"x", "x"}, {"1", "1"}, {"1", ""}, {1, 1}},
            {"<b/>", {}, {}, {"", ""}, {}}};
    for (const auto& [element, names, texts, xAndY, numbers] : cases) {
        TagIterator iterator;
        EXPECT_EQ(iterator.init("<a>" + element + "</a>", true), 0);
        EXPECT_EQ(iterator.getAttrsName(), names) << element;
        Strings all;
        iterator.parseNodeAll(all);
        EXPECT_EQ(all, texts) << element;
        Strings named;
        iterator.parseNodeWithName({"x", "y"}, named);
        EXPECT_EQ(named, xAndY) << element;
        Ints row;
        iterator.parseNodeIntVector(row);
        EXPECT_EQ(row, numbers) << element;
    }
}

TEST(TagIterator, ReadsAttributesOntoWhatIsThere) {
    LogCapture log;
    TagIterator iterator;
    EXPECT_EQ(iterator.init("<a><b y='5'/>text</a>", true), 0);
    Strings texts = {"k", "l", "m"};
    iterator.parseNodeWithName({"x", "y"}, texts);
    EXPECT_THAT(texts, ElementsAre("k", "5"));
    iterator.parseNodeWithName({"y", "x", "y"}, texts);
    EXPECT_THAT(texts, ElementsAre("5", "5", "5"));
    iterator.parseNodeAll(texts);
    Ints row = {1};
    iterator.parseNodeIntVector(row);
    EXPECT_THAT(row, ElementsAre(1, 5));

    // A text node has nothing to say, and off the end there is nothing to ask.
    for (const LogLines& messages : {LogLines(), LogLines(3, kNoNode)}) {
        iterator.next();
        iterator.parseNodeAll(texts);
        iterator.parseNodeWithName({"y"}, texts);
        iterator.parseNodeIntVector(row);
        EXPECT_EQ(texts.size() + row.size() + iterator.getAttrsName().size(), 4U + 2U);
        EXPECT_EQ(log.take(), messages);
    }
}

TEST(TagIterator, SaysWhyADocumentCannotBeLoaded) {
    const LogLine empty = error("TagIterator", "Invalide xml file path/data, 52");
    const LogLine unread = error("TagIterator", "fail to call xmlReadFile,  63");
    const LogLine rootless = error("TagIterator", "fail to call xmlDocGetRootElement, 69");
    const TempFile good("<a><b/></a>");
    const TempFile bad("<a><b></a>");
    const std::tuple<std::string, bool, bool, int, LogLines> cases[] = {
            {good.path(), false, false, 0, {}},
            {"", false, false, -22, {empty}},
            {"", true, false, -22, {empty}},
            {bad.path(), false, false, -22, {unread}},
            {good.path() + ".missing", false, false, -22, {unread}},
            {"<a><b/></a>", false, false, -22, {unread}},
            {good.path(), true, false, -22, {unread}},
            {"<!-- no root -->", true, false, -22, {unread}},
            {"<a><b/></a>", true, true, -19, {rootless}}};
    LogCapture log;
    for (const auto& [source, fromMemory, hideRoot, status, messages] : cases) {
        TagIterator iterator;
        gRootless = hideRoot;
        EXPECT_EQ(iterator.init(source, fromMemory), status) << source;
        gRootless = false;
        EXPECT_EQ(describe(iterator), status == 0 ? "b:E" : "-") << source;
        EXPECT_EQ(log.take(), messages) << source;
    }
}

TEST(TagIterator, TheLastOneCleansUp) {
    gCleanups = 0;
    for (const int cleanups : {1, 2}) {
        {
            TagIterator first;
            EXPECT_EQ(first.init("<a><b/></a>", true), 0);
            { const TagIterator second; }
            EXPECT_EQ(TagIterator::mInstanceCount, 1);
            EXPECT_EQ(gCleanups, cleanups - 1);
            EXPECT_EQ(describe(first), "b:E");
        }
        EXPECT_EQ(TagIterator::mInstanceCount, 0);
        EXPECT_EQ(gCleanups, cleanups);
    }
}

constexpr int kMax = std::numeric_limits<int>::max();
constexpr int kMin = std::numeric_limits<int>::min();

TEST(IntegerText, ReadsOneNumberOffTheFront) {
    const std::pair<int, Strings> cases[] = {
            {0, {"", "oops", "true", ",5", "-", "+", "0x10", "-0", "\t"}},
            {0, {"+-5", "-+5", "++5", "--5", "- 5", "+ 5"}},
            {12, {"12", "12abc", "12.7", "12e3", "+12", "0012", " 12", "\t\n\v\f\r12"}},
            {-15, {"  -15dB", "-015"}},
            {kMax, {"2147483647", "2147483648", "99999999999", "+99999999999999999999999"}},
            {kMin, {"-2147483648", "-2147483649", "-99999999999999999999999"}}};
    for (const auto& [number, texts] : cases) {
        for (const std::string& text : texts) {
            EXPECT_EQ(string2Int(text), number) << text;
        }
    }
}

TEST(IntegerText, ReadsRows) {
    const std::pair<Ints, Strings> cases[] = {
            {{9, 10, 20, 30, 40}, {"10, 20,30 40"}},
            {{9, 1, 2}, {"1,2", "1 2", "1, 2,", "1  2 ", "1\t2", "1\n2", "1+2", "1 2;3", "1,2x,3"}},
            {{9, 1}, {"1,,2", "1 ,2", "1\t,2", "1;2", "1,x,2", "1,2147483648,6", "1 -2147483649 6"}},
            {{9}, {"", " ", ",1", "oops", "- 5", "99999999999,1"}},
            {{9, 0}, {"0x10"}},
            {{9, 1, -2}, {"1-2"}},
            {{9, kMax, kMin}, {"2147483647 -2147483648"}}};
    for (const auto& [expected, texts] : cases) {
        for (const std::string& text : texts) {
            Ints row = {9};
            string2IntVector(text, row);
            EXPECT_EQ(row, expected) << text;
        }
    }
}

}  // namespace
}  // namespace ormel::test
