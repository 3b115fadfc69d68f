// TagIterator, and reading numbers.
#include <dlfcn.h>
#include <libxml/parser.h>
#include <ormel/TagIterator.h>
#include <ormel/TuningFileParser.h>

#include <functional>
#include <sstream>

#include "support/Store.h"

namespace {

int gCleanups = 0;
bool gRootless = false;

}  // namespace

// These replace libxml2's functions in the whole process. One counts its calls; the other can hide
// the root, because every well-formed document has one.
extern "C" void xmlCleanupParser() {
    ++gCleanups;
    reinterpret_cast<decltype(&xmlCleanupParser)>(dlsym(RTLD_NEXT, __func__))();
}

extern "C" xmlNodePtr xmlDocGetRootElement(const xmlDoc* document) {
    const auto real = reinterpret_cast<decltype(&xmlDocGetRootElement)>(dlsym(RTLD_NEXT, __func__));
    return gRootless ? nullptr : real(document);
}

namespace ormel::test {
namespace {

using Ints = std::vector<int>;
using LogLines = std::vector<LogLine>;

const LogLine kNoNode = error("TagIterator", "Invalid node when parsing String vector.");
const LogLine kEmptyStack = error("TagIterator", "It's empty in node stack!");

// The current node's name and what it is: an element, with children, with a next sibling.
std::string describe(TagIterator& iterator) {
    return std::string(iterator.isCurValid() ? " " : " -") + iterator.getNodeName() +
           (iterator.isElementNode() ? ":E" : ":") + (iterator.isChildrenValid() ? "C" : "") +
           (iterator.isNextValid() ? "N" : "");
}

template <typename List>
std::string joined(const List& list) {
    std::ostringstream text;
    for (const auto& item : list) {
        text << item << ',';
    }
    return "[" + text.str() + "]";
}

// The current node's attributes: the texts of x and y, then all texts, all as integers, all names.
// Texts that are not found keep the values "l", "m" and "n".
std::string readAttributes(TagIterator& iterator) {
    std::vector<std::string> texts = {"l", "m", "n"};
    Ints numbers;
    iterator.parseNodeWithName({"x", "y"}, texts);
    iterator.parseNodeAll(texts);
    iterator.parseNodeIntVector(numbers);
    return joined(texts) + joined(numbers) + joined(iterator.getAttrsName());
}

// The nodes that the cursor visits, by steps: n next(), c childrenNext(), < pushNode(), >
// popNode(), 0 clearAll(), 1 init(), r readAttributes().
std::string walk(const std::string& document, const std::string& steps) {
    TagIterator iterator;
    std::string trace;
    const std::map<char, std::function<void()>> moves = {
            {'n', [&] { iterator.next(); }},
            {'c', [&] { iterator.childrenNext(); }},
            {'<', [&] { iterator.pushNode(); }},
            {'>', [&] { iterator.popNode(); }},
            {'0', [&] { iterator.clearAll(); }},
            {'1', [&] { iterator.init(document, true); }},
            {'r', [&] { trace += readAttributes(iterator); }}};
    for (const char step : "1" + steps) {
        moves.at(step)();
        trace += describe(iterator);
    }
    return trace;
}

TEST(TagIterator, VisitsNodesAndReadsAttributes) {
    const std::string indented = "<a>\n<b>\n<c/>\n<d>x</d>\n</b>\n<!--k--><e/></a>";
    const std::string rare = "<!DOCTYPE a [<!ENTITY x 'y'>]><a><?pi b?><![CDATA[c]]>&x;</a>";
    const struct {
        std::string document;
        const char* steps;
        const char* trace;
        LogLines messages;
    } cases[] = {
            {indented, "nnnnnnc", " text:N b:ECN text:N comment:N e:E -: -: -:", {}},
            {indented, "nccnnc", " text:N b:ECN c:EN c:EN text:N d:ECN -:", {}},
            {indented, "n<cnn>n", " text:N b:ECN b:ECN c:EN text:N d:ECN b:ECN text:N", {}},
            {"<a><b/></a>", "cn<1>>", " b:E b:E -: -: b:E -: -:", {kEmptyStack}},
            {"<a><b/></a>", "<n<>>", " b:E b:E -: -: -: b:E", {}},
            {"<a><b/></a>", "<<0>1>>", " b:E b:E b:E -: -: b:E -: -:", {kEmptyStack}},
            {"<a><b><c/><d/></b></a>", "c", " b:EC d:E", {}},
            {rare, "nn", " pi:N :N x:", {}},
            {"<a>text</a>", "rn", " text:[l,m,n,][][] text: -:", {}},
            {"<a/>", "ncr", " -: -: -:[l,m,n,][][] -:", LogLines(3, kNoNode)},
            {"<a><b y='5' z='7'/></a>", "r", " b:E[l,5,5,7,][5,7,][y,z,] b:E", {}},
            {"<a><b p='3' q='x' r='-4'/></a>", "r", " b:E[l,m,3,x,-4,][3,0,-4,][p,q,r,] b:E", {}},
            {"<a><b X='1' y='' x='2'/></a>", "r", " b:E[2,,1,,2,][1,0,2,][X,y,x,] b:E", {}},
            {"<a><b x='1&amp;2&#10;'/></a>", "r", " b:E[1&2\n,m,1&2\n,][1,][x,] b:E", {}},
            {"<!DOCTYPE a [<!ENTITY e '2'>]><a><b x='1&e;3'/></a>",
             "r",
             " b:E[123,m,123,][123,][x,] b:E",
             {}},
            // Texts are looked up by local name: all attributes of one name give the text of the
            // first.
            {"<a><b xmlns:n='u' n:x='1' x='2'/></a>", "r", " b:E[1,m,1,1,][1,1,][x,x,] b:E", {}},
            {"<a><b/></a>", "r", " b:E[l,m,][][] b:E", {}},
            // Adjacent texts are one node, as are adjacent CDATA sections, which have no name.
            {"<a>1&amp;2&#65;\r\n<b/></a>", "n", " text:N b:E", {}},
            {"<a>t<![CDATA[]]><![CDATA[t]]>t<?p?><!--c--></a>",
             "nnnnn",
             " text:N :N text:N p:N comment: -:",
             {}},
            {"<?p?><!--c--><a><b/></a><?p?>", "n", " b:E -:", {}},
            {"<a><b x='&amp;&#38;#38;&lt;'/></a>", "r", " b:E[&&#38;<,m,&&#38;<,][0,][x,] b:E", {}},
            {"<a><b xmlns='u' xmlns:n='v' n:y='1' xml:x='2'/></a>",
             "r",
             " b:E[2,1,1,2,][1,2,][y,x,] b:E",
             {}},
            {"<a><p:b p:x='1' x='2'/></a>", "r", " p:b:E[2,m,1,2,][1,2,][p:x,x,] p:b:E", {}},
            // An undeclared entity has no text. libxml2 also puts a reference in an attribute
            // before the element. Declarations add no attributes.
            {"<!DOCTYPE a SYSTEM 's' [<!ATTLIST b y CDATA '3'>]><a><b x='1&und;2'/>&und;</a>",
             "nrn",
             " und:N b:EN[12,m,12,][12,][x,] b:EN und:",
             {}},
            {"<!DOCTYPE a [<!ENTITY e '2&f;'><!ENTITY f '3'>]><a>&e;<b x='1&e;&f;'/></a>",
             "nr",
             " e:N b:E[1233,m,1233,][1233,][x,] b:E",
             {}}};
    LogCapture log;
    for (const auto& [document, steps, trace, messages] : cases) {
        EXPECT_EQ(walk(document, steps), trace) << steps << " in " << document;
        EXPECT_EQ(log.take(), messages) << steps << " in " << document;
    }
}

TEST(TagIterator, ReportsWhyItCannotReadADocument) {
    const TempFile good("<a><b/></a>");
    const TempFile bad("<a>\n<b></a>");
    constexpr char kEmpty[] = "Invalide xml file path/data, 52";
    constexpr char kUnread[] = "fail to call xmlReadFile,  63";
    // clang-format off
    const struct { std::string source; bool fromMemory; int status; const char* message; const char* reason; } cases[] = {
        {good.path(),                 false, 0,   "",      ""},
        {"",                          false, -22, kEmpty,  "no path or text"},
        {"",                          true,  -22, kEmpty,  "no path or text"},
        {bad.path(),                  false, -22, kUnread, "line 2: Opening and ending tag mismatch: b line 2 and a"},
        {good.path() + "-",           false, -22, kUnread, "No such file or directory"},
        {"-",                         false, -22, kUnread, "No such file or directory"},
        {"http://[::1]/",             false, -22, kUnread, "No such file or directory"},
        {::testing::TempDir(),        false, -22, kUnread, "not a regular file"},
        {"/dev/null",                 false, -22, kUnread, "not a regular file"},
        {good.path(),                 true,  -22, kUnread, "line 1: Start tag expected, '<' not found"},
        {"<!DOCTYPE a><a><b/></a>",   true,  -19, "fail to call xmlDocGetRootElement, 69", "no root element"},
    };
    // clang-format on
    LogCapture log;
    for (const auto& [source, fromMemory, status, message, reason] : cases) {
        TagIterator iterator;
        gRootless = status == -19;
        EXPECT_EQ(iterator.init(source, fromMemory), status) << source;
        gRootless = false;
        EXPECT_EQ(iterator.getError(), reason) << source;
        EXPECT_EQ(describe(iterator), status == 0 ? " b:E" : " -:") << source;
        EXPECT_EQ(log.take(), LogLines(status == 0 ? 0 : 1, error("TagIterator", message)));
    }
}

TEST(TagIterator, CleansUpLibxml2WithTheLastInstance) {
    for (gCleanups = 0; gCleanups < 2;) {
        const int before = gCleanups;
        auto last = std::make_unique<TagIterator>();
        EXPECT_EQ(last->init("<a><b/></a>", true), 0);
        TagIterator().pushNode();
        EXPECT_EQ(TagIterator::mInstanceCount, 1);
        // Loads do not count as instances, so they do not clean up while libxml2 is in use.
        EXPECT_EQ(TuningFileParser().setTuningFile("<a><b/></a>", true), 0);
        EXPECT_EQ(gCleanups, before);
        last.reset();
        EXPECT_EQ(TagIterator::mInstanceCount, 0);
        ASSERT_EQ(gCleanups, before + 1);
        EXPECT_EQ(TuningFileParser().setTuningFile("<a><b/></a>", true), 0);
        EXPECT_EQ(gCleanups, before + 1);
    }
}

TEST(IntegerText, ReadsNumbersLikeAStream) {
    constexpr int kMax = std::numeric_limits<int>::max();
    constexpr int kMin = std::numeric_limits<int>::min();
    // The row starts with a 9; numbers are appended.
    // clang-format off
    const struct { int number; Ints row; std::vector<std::string> texts; } cases[] = {
        {0,    {9},                 {"", " ", "oops", ",1", "-", "+", "+-5", "-+5", "++5", "--5", "- 5", "+ 5"}},
        {0,    {9, 0},              {"0x10", "-0"}},
        {12,   {9, 12},             {"12abc", "12.7", "12e3", "+12", "0012", "\t\n\v\f\r12"}},
        {-15,  {9, -15},            {"  -15dB", "-015"}},
        {1,    {9, 1, 2},           {"1,2", "1 2", "1, 2,", "1  2 ", "1\t2", "1+2", "1 2;3", "1,2x,3"}},
        {1,    {9, 1},              {"1,,2", "1 ,2", "1\t,2", "1;2", "1,2147483648,6", "1 -2147483649"}},
        {1,    {9, 1, -2},          {"1-2"}},
        {10,   {9, 10, 20, 30, 40}, {"10, 20,30 40"}},
        {kMax, {9, kMax, kMin},     {"2147483647 -2147483648"}},
        {kMax, {9},                 {"2147483648,1", "99999999999", "+99999999999999999999999"}},
        {kMin, {9},                 {"-2147483649,1", "-99999999999999999999999"}},
    };
    // clang-format on
    for (const auto& [number, row, texts] : cases) {
        for (const std::string& text : texts) {
            Ints read = {9};
            string2IntVector(text, read);
            EXPECT_EQ(read, row) << text;
            EXPECT_EQ(string2Int(text), number) << text;
        }
    }
}

}  // namespace
}  // namespace ormel::test
