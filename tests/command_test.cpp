// The effect's parameter codes, SetParamCommand, and sending lists to the shared store.
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

TEST(ParameterCode, IsTheLowerCaseNameLeastSignificantByteFirst) {
    EXPECT_EQ(codeOf(VOL), kVol);
    EXPECT_EQ(codeOf(DEON), kDeon);
    EXPECT_EQ(codeOf(DOM), 0x006d6f64);
    EXPECT_EQ(codeOf(HVRC), 0x63727668);
    EXPECT_EQ(codeOf(static_cast<int32_t>(kKivParameterCount)), 0);
    EXPECT_EQ(kivCodeOfName(""), 0);
    EXPECT_EQ(kivCodeOfName("ABCDE"), 0);
    EXPECT_EQ(kivCodeOfName("\xff@Z["), 0x5b7a40ff);
}

TEST(ParameterCode, IsInOrderOfTheNumbers) {
    std::string letters;
    for (int32_t param = 0; param < kFirstKivParameterCount; ++param) {
        letters += param % 10 == 0 ? '\n' : ' ';
        letters += lettersOf(codeOf(param));
    }
    EXPECT_EQ(letters, R"(
vol pstg preg plb ngon deon dea ded vmb dvme
dvmc dvle dvla dvli dvlo dvlc ieon iea arod artp
geon aoon ver iebs ards aron arde arsa arbs arti
dom dsb gebs beon beb becf bew vbon vbm vbsf
vbog vbsg vbhg vbmf vbbg vbct vbhm vbhb vbmx vbrg
aobs msce miee mdle mdee mave vnbs dmc dhfm dfsa
dsa dhsa drsa drha svsb ceon ceqt dplp mvbe rsse
rssa ieid drcm hpon hptw hpat hpaa hpar bmde bmdt
rvse rvsa vssd svm svrc avsb hvm hvrc hlra sdfa)");
}

// The process's shared store, reset to its initial state.
KivParamStore& freshStore() {
    KivParamStore& store = android::Singleton<KivParamStore>::getInstance();
    store.~KivParamStore();
    return *new (&store) KivParamStore;
}

using Published = std::map<KivParamStore::Key, Values>;

TEST(Command, AppendsEntriesInCallOrder) {
    const Values a = {100, 200};
    const Values b = {-1, 0};
    SetParamCommand command(7);
    command.add(VOL, 5);
    command.setDeviceId(2);
    command.add(DEON, 1);
    command.add(DEON, INT32_MIN);
    command.add(VOL, b);
    command.setDeviceId(kAll);
    command.add(VOL, {&b, &a, &b});
    command.add(DEON, std::initializer_list<const Values*>());
    command.add(DEON, 2, {&a, &b});
    command.add(VOL, -3, {});
    command.add(VOL, {0});
    command.add(VOL, {0, 0});
    EXPECT_EQ(command.mParamCount, 10);
    EXPECT_EQ('\n' + listText(command.mParams), R"(
7:list 0
-1:vol 5
2:deon 1
2:deon -2147483648
2:vol -1 0
all:vol -1 0 100 200 -1 0
all:deon
all:deon 2 100 200 -1 0
all:vol -3
all:vol 0
all:vol 0 0
)");
}

TEST(Command, SendsItsEntriesOnEachExecution) {
    KivParamStore& store = freshStore();
    KivEffect effect(3, android::String16("effect"));
    SetParamCommand command(7);
    EXPECT_EQ(command.execute(effect), 0);  // Nothing to send.
    EXPECT_EQ(store.getCommitCount(), 0);
    command.add(VOL, 5);
    EXPECT_EQ(command.execute(effect), -22);
    command.setDeviceId(2);
    command.add(DEON, 6);
    EXPECT_EQ(command.mParams.at(1), 1);
    EXPECT_EQ(command.execute(effect), -22);
    EXPECT_EQ(command.mParams.at(1), 2);
    EXPECT_EQ(store.getCommitCount(), 2);
    EXPECT_EQ(store.getPublished(), (Published{{{-1, kVol}, {5}}, {{2, kDeon}, {6}}}));
    command.mParams.clear();
    EXPECT_EQ(command.execute(effect), 0);
    EXPECT_EQ(store.getCommitCount(), 2);
}

TEST(Command, JoinsListsGivenAtRunTime) {
    Values a = {1, 2};
    Values b = {3};
    const std::vector<Values*> lists = {&a, nullptr, &b, &a};
    SetParamCommand command(7);
    command.add(VOL, lists);
    command.add(VOL, 9, lists);
    command.add(VOL, std::vector<Values*>());
    command.add(VOL, 9, std::vector<Values*>());
    command.add(VOL, {});
    EXPECT_EQ(listText(command.mParams),
              "7:list 0\n-1:vol 1 2 3 1 2\n-1:vol 9 1 2 3 1 2\n-1:vol\n-1:vol 9\n-1:vol\n");
}

TEST(Command, JoinsItsOwnListFromBeforeTheCall) {
    SetParamCommand command(1);
    command.add(VOL, {nullptr, &command.mParams});
    EXPECT_EQ(command.mParams, (Values{1, 0, -1, kVol, 2, 1, 0}));
    command.add(VOL, std::vector<const Values*>{&command.mParams});
    EXPECT_EQ(command.mParams,
              (Values{1, 0, -1, kVol, 2, 1, 0, -1, kVol, 7, 1, 0, -1, kVol, 2, 1, 0}));
}

TEST(SharedStore, GetsTheEntriesOfAValidList) {
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
    // A list with a truncated last entry is valid, but without that entry.
    list[1] = 2;
    EXPECT_EQ(effect.send(1, list), -22);
    EXPECT_EQ(log.take().size(), 2U);
    EXPECT_EQ(store.getPublished(), (Published{{{2, kVol}, {7}}}));
    EXPECT_EQ(effect.send(1, {0, 0}), -22);
    EXPECT_EQ(store.getCommitCount(), 2);
}

TEST(SharedStore, PublishesValuesOnCommit) {
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
