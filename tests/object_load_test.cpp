// Loads objects that no document can describe.
#include <gtest/gtest.h>
#include <store/DocumentLoad.h>

#include <array>

namespace ormel::test {
namespace {

// In a document only the last tuning can be missing, since nothing is read after it.
TEST(ObjectLoad, IgnoresASecondTuningOfTheInternalSpeakerEvenIfTheFirstDoesNotExist) {
    const std::string own = "default_internal_speaker";
    const std::array<std::string, 2> names = {"missing", "four"};
    for (const bool missingFirst : {true, false}) {
        Tuning tuning("four", ENDPOINT_SPEAKER, false);
        tuning.set(OUTPUT_CHANNELS, {4});
        std::array bindings = {DeviceTuning(own, "internal_speaker", names[missingFirst ? 0 : 1]),
                               DeviceTuning(own, "internal_speaker", names[missingFirst ? 1 : 0])};
        std::set<Tuning*> tunings = {&tuning};
        std::set<DeviceTuning*> deviceTunings = {&bindings[0], &bindings[1]};
        DeviceData data;
        data.setTunings(tunings);
        data.setDeviceTunings(deviceTunings);
        SpatializerParamArray array;
        DocumentBudget budget;
        DocumentLoad load(array, data, budget);
        EXPECT_TRUE(load.build());
        load.commit();
        EXPECT_EQ(array.getTuningCount(), 1);
        EXPECT_EQ(array.getOutputChannelCount(), missingFirst ? 2 : 4);
    }
}

}  // namespace
}  // namespace ormel::test
