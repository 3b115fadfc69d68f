// The effect's parameter codes, the builder of packed lists, and the way into the shared store.
#include <kivparamstorage/KivParamStore.h>
#include <ormel/KivEffect.h>
#include <ormel/SetParamCommand.h>

#include "support/Documents.h"
#include "support/LogCapture.h"

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
    EXPECT_EQ((Values{codeOf(VOL), codeOf(DEON), codeOf(DOM), codeOf(HVRC), codeOf(-1), codeOf(90)}),
              (Values{kVol, kDeon, 0x006d6f64, 0x63727668, 0, 0}));
    EXPECT_EQ((Values{kivCodeOfName(""), kivCodeOfName("ABCDE"), kivCodeOfName("a@[\xff")}),
              (Values{0, 0, -0xa4bf9f}));
    // Sums over all ninety, the second one with their places as factors, which shows a wrong order.
    uint64_t sum = 0;
    uint64_t sumByPlace = 0;
    for (int32_t param = 0; param < 90; ++param) {
        sum += static_cast<uint64_t>(codeOf(param));
        sumByPlace += static_cast<uint64_t>(param + 1) * static_cast<uint64_t>(codeOf(param));
    }
    EXPECT_EQ(sum, 0x1e84c4354fU);
    EXPECT_EQ(sumByPlace, 0x5b48554ac44U);
}

// Tests with a shared store as a process first has it.
class CommandTest : public ::testing::Test {
  protected:
    CommandTest() {
        mStore.~KivParamStore();
        new (&mStore) KivParamStore;
    }

    void expectStore(const std::map<KivParamStore::Key, Values>& values, int commits) {
        EXPECT_EQ(mStore.getPublished(), values);
        EXPECT_EQ(mStore.getCommitCount(), commits);
    }

    LogCapture log;
    KivParamStore& mStore = android::Singleton<KivParamStore>::getInstance();
    KivEffect mEffect{3, android::String16("effect")};
};

TEST_F(CommandTest, AppendsEntriesAsTheyComeAndSendsThem) {
    const Values a = {100, 200};
    const Values b = {-1, 0};
    SetParamCommand command(7);
    EXPECT_EQ(command.execute(mEffect), 0);
    expectStore({}, 0);
    command.add(VOL, 5);
    command.setDeviceId(2);
    command.add(DEON, 1);
    command.add(DEON, INT32_MIN);
    command.add(VOL, Values{});
    command.setDeviceId(kAll);
    command.add(VOL, b);
    command.add(VOL, {&b, &a, &b});
    command.add(DEON, std::initializer_list<const Values*>());
    Values words = {7, 0, -1, kVol, 1, 5, 2, kDeon, 1, 1, 2, kDeon, 1, INT32_MIN, 2, kVol, 0};
    words = join(words, Values{kAll, kVol, 2, -1, 0, kAll, kVol, 6, -1, 0, 100, 200, -1, 0},
                 Values{kAll, kDeon, 0});
    EXPECT_EQ(command.mParams, words);
    EXPECT_EQ(command.execute(mEffect), -22);
    EXPECT_EQ(command.mParams[1], 7);
    command.add(DEON, 2, {&a, &b});
    command.add(VOL, -3, {});
    EXPECT_EQ(command.mParamCount, 9);
    words = join(words, Values{kAll, kDeon, 5, 2, 100, 200, -1, 0, kAll, kVol, 1, -3});
    EXPECT_EQ(command.execute(mEffect), -22);
    words[1] = 9;
    EXPECT_EQ(command.mParams, words);
    expectStore({{{-1U, kVol}, {5}},
                 {{2, kDeon}, {INT32_MIN}},
                 {{2, kVol}, {}},
                 {{kAll, kDeon}, {2, 100, 200, -1, 0}},
                 {{kAll, kVol}, {-3}}},
                2);
    EXPECT_EQ(log.take(), std::vector<LogLine>());
}

TEST_F(CommandTest, SendsNothingOfAListThatIsNotWhatItsHeaderSays) {
    const LogLine refused =
            error("KivEffect", "sendSharedStore() Invalid data for setting parameter values.");
    const auto send = [&](const Values& list, unsigned int bytes) {
        mEffect.sendSharedStore(list.data(), bytes);
        const std::vector<LogLine> lines = log.take();
        EXPECT_LE(std::count(lines.begin(), lines.end(), refused), 1);
        return lines.empty() || lines.back() != refused;
    };
    EXPECT_FALSE(send({0, 3, 2, kVol, 1, 5}, 24));
    EXPECT_FALSE(send({}, 0) || send({0, 0}, 7) || send({0, 0}, 0x80000000));
    expectStore({}, 0);
    // A last entry that is cut short does not spoil a list, but is no entry either.
    EXPECT_TRUE(send({0, 2, 2, kVol, 1, 7, 2, kDeon, 3, 7, 7}, 44) && send({0, 0}, 8));
    expectStore({{{2, kVol}, {7}}}, 2);
}

TEST_F(CommandTest, SharedStoreShowsWhatIsCommitted) {
    const Values values = {1, 2, 3};
    mStore.setParam(2, 10, values.data(), 3);
    mStore.setParam(2, 10, values.data() + 1, 1);
    mStore.setParam(2, 11, values.data(), 2);
    expectStore({}, 0);
    mStore.commitChange();
    mStore.setParam(2, 11, values.data(), -2);
    expectStore({{{2, 10}, {2}}, {{2, 11}, {1, 2}}}, 1);
    mStore.commitChange();
    expectStore({{{2, 10}, {2}}, {{2, 11}, {}}}, 2);
    std::string outputs;
    for (int32_t param = 0; param < 90; ++param) {
        const int32_t code = codeOf(param);
        outputs += mStore.isDeviceProcParamInProfile(code) ? lettersOf(code) + " " : "";
    }
    EXPECT_EQ(outputs, "geon aoon aron arsa arbs dom gebs vbon aobs ceon ceqt ");
    mStore.setDeviceProcParams({kVol});
    EXPECT_TRUE(mStore.isDeviceProcParamInProfile(kVol));
    EXPECT_FALSE(mStore.isDeviceProcParamInProfile(codeOf(DOM)));
}

}  // namespace
}  // namespace ormel::test
