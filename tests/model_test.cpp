// The names of parameters and ports, and the objects that a tuning document describes.
#include <gmock/gmock.h>
#include <ormel/DeviceData.h>

#include <string_view>

#include "support/Documents.h"

namespace ormel::test {
namespace {

using ::testing::ElementsAre;
using ::testing::Pair;

TEST(Parameter, FirstNamesAreInAlphabeticalOrder) {
    for (int32_t param = 1; param < kFirstParameterCount; ++param) {
        const std::string_view before = parameterName(param - 1);
        // One name is out of order, but callers rely on its number.
        const bool isAscending = param != VIRTUAL_BASS_MIX_FREQ_HIGH;
        EXPECT_EQ(before < parameterName(param), isAscending)
                << parameterName(param) << ": append new parameters; callers use the others' "
                << "numbers";
    }
    EXPECT_STREQ(parameterName(0), "advanced_headphone_virtualizer_lr_angle");
    EXPECT_STREQ(parameterName(42), "ieq_id");
    EXPECT_STREQ(parameterName(80), "virtual_bass_mix_frequency");
    EXPECT_STREQ(parameterName(105), "volume_modeler_enable");
}

TEST(Parameter, OutOfRangeNumbersHaveNoName) {
    EXPECT_STREQ(parameterName(-1), "");
    EXPECT_STREQ(parameterName(static_cast<int32_t>(kParameterCount)), "");
}

TEST(Parameter, IsAcceptedByAtMostOneClass) {
    const std::pair<char, const std::set<Parameter>&> classes[] = {
            {'I', IeqPreset::kValidParams}, {'G', GeqPreset::kValidParams},
            {'P', Profile::kValidParams},   {'E', ProfileEndpoint::kValidParams},
            {'T', Tuning::kValidParams},
    };
    std::string owners;
    for (size_t param = 0; param < kParameterCount; ++param) {
        std::string accepting;
        for (const auto& [letter, params] : classes) {
            accepting.append(params.count(static_cast<Parameter>(param)), letter);
        }
        EXPECT_LE(accepting.size(), 1U) << kParameterNames[param];
        owners += accepting.empty() ? "-" : accepting;
        owners += param % 10 == 9 ? " " : "";
    }
    // The first 106 by number, in tens. virtual_bass_type, number 90, is in no class.
    const std::string first =
            "PPTTTTTTTT TTETTTTTET TTTTPEEEGG EPEEEEEETE EIIIPEPPPE "
            "TTTETTTTTT TTTTTTTTTP PTEPETTETT TTTTTTTTTT -ETTTTETEE TEEETP";
    EXPECT_EQ(owners.substr(0, first.size()), first);
}

TEST(Port, HasANameAndAnEndpointAndSomeAnAndroidDevice) {
    EXPECT_THAT(kPortNames, ElementsAre("internal_speaker", "hdmi", "miracast", "headphone",
                                        "bluetooth", "usb", "other"));
    EXPECT_THAT(Tuning::kEndpNameToEndpoint,
                ElementsAre(Pair("headphone", 1), Pair("other", 2), Pair("speaker", 0)));
    EXPECT_THAT(kPortNameToEndpoint,
                ElementsAre(Pair("bluetooth", 1), Pair("hdmi", 2), Pair("headphone", 1),
                            Pair("internal_speaker", 0), Pair("miracast", 2), Pair("other", 2),
                            Pair("usb", 1)));
    EXPECT_THAT(kPortNameToAndroidDevice,
                ElementsAre(Pair("bluetooth", 128), Pair("headphone", 8),
                            Pair("internal_speaker", 2), Pair("usb", 16384)));
    // Loads look up by subscript, which adds an entry.
    EXPECT_EQ(kPortNameToAndroidDevice["hdmi"], 0);
    EXPECT_EQ(kPortNameToAndroidDevice.erase("hdmi"), 1U);
}

TEST(TuningObject, DumpsItsValuesInOrder) {
    IeqPreset ieq(1LL << 40, 2, "soft");
    EXPECT_THAT(ieq.getValues()[IEQ_ID], ElementsAre(2));
    ieq.set(IEQ_TARGET, {});
    ieq.set(IEQ_FREQUENCY, {32, 64});
    EXPECT_EQ(ieq.toString(),
              "id=1099511627776\npresetId=2\nname=soft\nieq_frequency=32,64,\nieq_target=\n");
    GeqPreset geq(4);
    geq.set(GEQ_GAIN, {1, 2});
    geq.set(GEQ_GAIN, {-12, 0});
    geq.set(PEAK_VALUE, {2147483647});
    EXPECT_EQ(geq.toString(), "id=-1\nprofileId=4\ngeq_gain=-12,0,\npeak_value=2147483647,\n");
    EXPECT_EQ(DeviceTuning("d", "usb", "t").toString(), "id=-1\ndevice=d\nport=usb\ntuning=t");
}

// A dump lists every parameter of the class, and adds an empty list for each to the object.
template <typename Object>
void expectFullDump(Object object, std::string expected) {
    for (const Parameter param : object.getValidParams()) {
        expected.append(parameterName(param)).append("=\n");
    }
    object.setDirty(false);
    EXPECT_EQ(object.toString(), expected);
    EXPECT_EQ(object.getValues().size(), Object::kValidParams.size());
    EXPECT_FALSE(object.isDirty());
}

TEST(TuningObject, DumpsEveryParameterOfItsClass) {
    expectFullDump(Profile(5, "x", true),
                   "id=-1\nprofileId=5\nname=x\nmobility=true\nselectedGeqPreset=5\n");
    expectFullDump(ProfileEndpoint(-9L, 5, ENDPOINT_HEADPHONE, 2),
                   "id=-9\nprofileId=5\nendpoint=headphone\nselectedIeqPreset=2\n");
    Tuning restored(7L, "t", ENDPOINT_OTHER, true, false);
    restored.setEndpoint("headphone");
    restored.setEndpoint("usb");
    expectFullDump(restored, "id=7\nname=t\nendpoint=headphone\nmono=true\nreadonly=false\n");
}

template <typename Object, typename Operation, typename... Arguments>
bool marksDirty(Object object, Operation operation, Arguments... arguments) {
    object.setDirty(false);
    (object.*operation)(arguments...);
    return object.isDirty();
}

TEST(TuningObject, StartsDirtyUnlessRestored) {
    EXPECT_TRUE(IeqPreset(1, "a").isDirty());
    EXPECT_TRUE(IeqPreset(8LL, 1, "a").isDirty());  // The constructor sets the id as a value.
    EXPECT_TRUE(GeqPreset(1).isDirty());
    EXPECT_FALSE(GeqPreset(8LL, 1).isDirty());
    EXPECT_TRUE(Profile(1, "", false).isDirty());
    EXPECT_FALSE(Profile(8LL, 1, "", false).isDirty());
    EXPECT_TRUE(ProfileEndpoint(1, ENDPOINT_OTHER, 0).isDirty());
    EXPECT_FALSE(ProfileEndpoint(8L, 1, ENDPOINT_OTHER, 0).isDirty());
    EXPECT_TRUE(Tuning("", ENDPOINT_OTHER, false).isDirty());
    EXPECT_FALSE(Tuning(8L, "", ENDPOINT_OTHER, false, true).isDirty());
    EXPECT_TRUE(DeviceTuning("", "", "").isDirty());
    EXPECT_TRUE(DeviceTuning(8LL, "", "", "").isDirty());
}

TEST(TuningObject, IsMarkedDirtyByMostChanges) {
    const GeqPreset geq(1);
    const Profile profile(1, "", false);
    const ProfileEndpoint endpoint(1, ENDPOINT_OTHER, 0);
    const Tuning tuning("", ENDPOINT_OTHER, false);
    EXPECT_TRUE(marksDirty(IeqPreset(1, "a"), &IeqPreset::setName, "a"));
    EXPECT_TRUE(marksDirty(geq, &GeqPreset::set, PEAK_VALUE, std::vector<int>()));
    EXPECT_TRUE(marksDirty(profile, &Profile::setSelectedGeqPreset, 1));
    EXPECT_TRUE(marksDirty(endpoint, &ProfileEndpoint::setSelectedIeqPreset, 0));
    EXPECT_FALSE(marksDirty(geq, &GeqPreset::toString));
    EXPECT_FALSE(marksDirty(profile, &Profile::setMobility, true));
    EXPECT_FALSE(marksDirty(endpoint, &ProfileEndpoint::toString));
    EXPECT_FALSE(marksDirty(tuning, &Tuning::setMono, true));
    EXPECT_FALSE(marksDirty(tuning, &Tuning::setEndpoint, "headphone"));
    EXPECT_FALSE(marksDirty(DeviceTuning("", "", ""), &DeviceTuning::toString));
}

template <typename Object>
Object with(Object object, Parameter param, const std::vector<int>& values) {
    object.set(param, values);
    return object;
}

TEST(TuningObject, ComparesKeyAndValues) {
    const GeqPreset geq(1);
    EXPECT_TRUE(geq.equals(GeqPreset(8LL, 1)));
    EXPECT_FALSE(geq.equals(GeqPreset(2)));
    EXPECT_FALSE(geq.equals(with(geq, GEQ_GAIN, {1})));
    EXPECT_FALSE(with(geq, GEQ_GAIN, {1}).equals(with(geq, GEQ_GAIN, {1, 1})));
    EXPECT_FALSE(with(geq, GEQ_GAIN, {1, 1}).equals(with(geq, GEQ_GAIN, {1})));
    const Profile profile(1, "a", true);
    EXPECT_TRUE(profile.equals(Profile(8LL, 1, "b", false)));
    EXPECT_FALSE(profile.equals(Profile(2, "a", true)));
    EXPECT_FALSE(with(profile, PEAK_VALUE, {0}).equals(profile));
    const ProfileEndpoint endpoint(1, ENDPOINT_OTHER, 2);
    EXPECT_TRUE(endpoint.equals(ProfileEndpoint(8L, 1, ENDPOINT_OTHER, 2)));
    EXPECT_FALSE(endpoint.equals(ProfileEndpoint(2, ENDPOINT_OTHER, 2)));
    EXPECT_FALSE(endpoint.equals(ProfileEndpoint(1, ENDPOINT_SPEAKER, 2)));
    EXPECT_FALSE(endpoint.equals(ProfileEndpoint(1, ENDPOINT_OTHER, 3)));
    EXPECT_FALSE(endpoint.equals(with(endpoint, IEQ_ENABLE, {0})));
}

TEST(DeviceData, ValidationSelectsPreset0IfTheEqualizerIsOff) {
    const struct {
        std::vector<int> ieqEnable;
        int selectedPreset;
    } cases[] = {{{0}, 0}, {{0, 1}, 0}, {{1}, 2}, {{-1, 0}, 2}, {{}, 2}};
    for (const auto& [ieqEnable, selectedPreset] : cases) {
        ProfileEndpoint endpoint(1, ENDPOINT_SPEAKER, 2);
        ProfileEndpoint withoutSwitch = endpoint;
        endpoint.set(IEQ_ENABLE, ieqEnable);
        endpoint.setDirty(false);
        DeviceData data;
        data.setProfileEndPoints({&endpoint, &withoutSwitch});
        data.validateData();
        EXPECT_EQ(endpoint.getSelectedIeqPreset(), selectedPreset);
        EXPECT_EQ(endpoint.isDirty(), selectedPreset == 0);
        EXPECT_EQ(withoutSwitch.getSelectedIeqPreset(), 2);
        EXPECT_EQ(withoutSwitch.valuesToString(), "ieq_enable=\n");
    }
}

}  // namespace
}  // namespace ormel::test
