// The effect's parameter codes, the builder of packed lists, and the way into the shared store.
#include <kivparamstorage/KivParamStore.h>
#include <ormel/KivEffect.h>
#include <ormel/SetParamCommand.h>

#include "support/Documents.h"

namespace ormel::test {
namespace {

constexpr int32_t kVol = 0x006c6f76;
constexpr int32_t kDeon = 0x6e6f6564;

// The code that a command writes for a parameter.
int32_t codeOf(int32_t param) {
    SetParamCommand command(0);
    command.add(static_cast<KivParameter>(param), 0);
    return command.mParams.at(3);
}

TEST(ParameterCode, IsTheNameInLowerCaseFromTheLeastSignificantByte) {
    EXPECT_EQ((Values{codeOf(VOL), codeOf(DEON), codeOf(DOM), codeOf(HVRC), codeOf(90),
                      kivCodeOfName(""), kivCodeOfName("ABCDE"), kivCodeOfName("\xff@Z[")}),
              (Values{kVol, kDeon, 0x006d6f64, 0x63727668, 0, 0, 0, 0x5b7a40ff}));
    // The sum of all ninety, each times its place, so that a wrong order shows as well.
    int64_t sum = 0;
    for (int32_t param = 0; param < 90; ++param) {
        sum += int64_t{codeOf(param)} * (param + 1);
    }
    EXPECT_EQ(sum, 0x5b48554ac44);
}

// The process's shared store, as a process first has it.
KivParamStore& freshStore() {
    KivParamStore& store = android::Singleton<KivParamStore>::getInstance();
    store.~KivParamStore();
    return *new (&store) KivParamStore;
}

using Published = std::map<KivParamStore::Key, Values>;

TEST(Command, AppendsEntriesAsTheyComeAndSendsThem) {
    KivParamStore& store = freshStore();
    KivEffect effect(3, android::String16("effect"));
    const Values a = {100, 200};
    const Values b = {-1, 0};
    SetParamCommand command(7);
    EXPECT_EQ(command.execute(effect), 0);
    EXPECT_EQ(store.getCommitCount(), 0);
    command.add(VOL, 5);
    command.setDeviceId(2);
    command.add(DEON, 1);
    command.add(DEON, INT32_MIN);
    command.add(VOL, b);
    command.setDeviceId(kAll);
    command.add(VOL, {&b, &a, &b});
    command.add(DEON, std::initializer_list<const Values*>());
    command.add(DEON, 2, {&a, &b});
    Values words = {7,         0, -1,   kVol,  1,  5,    2,     kDeon, 1, 1,   2,   kDeon, 1,
                    INT32_MIN, 2, kVol, 2,     -1, 0,    kAll,  kVol,  6, -1,  0,   100,   200,
                    -1,        0, kAll, kDeon, 0,  kAll, kDeon, 5,     2, 100, 200, -1,    0};
    EXPECT_EQ(command.mParams, words);
    EXPECT_EQ(command.execute(effect), -22);
    command.add(VOL, -3, {});
    command.add(VOL, {0});
    command.add(VOL, {0, 0});
    EXPECT_EQ(command.execute(effect), -22);
    words[1] = 10;
    words.insert(words.end(), {kAll, kVol, 1, -3, kAll, kVol, 1, 0, kAll, kVol, 2, 0, 0});
    EXPECT_EQ(command.mParams, words);
    EXPECT_EQ(store.getPublished().size(), 5U);
    SetParamCommand echo(1);
    echo.add(VOL, {nullptr, &echo.mParams});
    EXPECT_EQ(echo.mParams, (Values{1, 0, -1, kVol, 2, 1, 0}));
    echo.mParams.clear();
    EXPECT_EQ(echo.execute(effect), 0);
    EXPECT_EQ(store.getCommitCount(), 2);
}

TEST(Command, JoinsListsThatAreKnownAtRunTimeOnly) {
    Values a = {1, 2};
    Values b = {3};
    std::vector<Values*> lists = {&a, nullptr, &b, &a};
    SetParamCommand command(7);
    command.add(VOL, lists);
    command.add(VOL, 9, lists);
    command.add(VOL, std::vector<const Values*>{&command.mParams});
    lists.clear();
    command.add(VOL, lists);
    command.add(VOL, 9, lists);
    command.add(VOL, {});
    EXPECT_EQ(listText(command.mParams),
              "7:list 0\n-1:vol 1 2 3 1 2\n-1:vol 9 1 2 3 1 2\n"
              "-1:vol 7 0 -1 7106422 5 1 2 3 1 2 -1 7106422 6 9 1 2 3 1 2\n"
              "-1:vol\n-1:vol 9\n-1:vol\n");
}

TEST(SharedStore, GetsNothingOfAListThatIsNotWhatItsHeaderSays) {
    LogCapture log;
    KivParamStore& store = freshStore();
    KivEffect effect(3, android::String16("effect"));
    const LogLine refused =
            error("KivEffect", "sendSharedStore() Invalid data for setting parameter values.");
    Values list = {0, 3, 2, kVol, 1, 7, 2, kDeon, 3, 8, 8};
    for (const unsigned int bytes : {24U, 7U, 0U, 0x80000000U}) {
        effect.sendSharedStore(list.data(), bytes);
        EXPECT_EQ(log.take().back(), refused) << bytes;
    }
    EXPECT_EQ(store.getCommitCount(), 0);
    // A last entry that is cut short does not spoil a list, but is no entry either.
    list[1] = 2;
    EXPECT_EQ(effect.send(1, list), -22);
    EXPECT_EQ(effect.send(1, {0, 0}), -22);
    EXPECT_EQ(log.take().size(), 2U);
    EXPECT_EQ(store.getPublished(), (Published{{{2, kVol}, {7}}}));
    EXPECT_EQ(store.getCommitCount(), 2);
}

TEST(SharedStore, ShowsWhatIsCommitted) {
    KivParamStore& store = freshStore();
    const Values values = {1, 2, 3};
    store.setParam(2, 10, values.data(), 3);
    store.setParam(2, 10, values.data(), -2);
    store.setParam(2, 11, values.data(), 2);
    EXPECT_EQ(store.getPublished(), Published());
    store.commitChange();
    store.setParam(2, 11, values.data() + 1, 1);
    EXPECT_EQ(store.getPublished(), (Published{{{2, 10}, {}}, {{2, 11}, {1, 2}}}));
    store.commitChange();
    EXPECT_EQ(store.getPublished(), (Published{{{2, 10}, {}}, {{2, 11}, {2}}}));
}

}  // namespace
}  // namespace ormel::test
