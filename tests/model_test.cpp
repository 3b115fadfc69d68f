// The vocabulary of tunings, and the objects that a tuning document describes.
#include <gmock/gmock.h>
#include <ormel/DeviceData.h>

#include <cstring>
#include <numeric>

namespace ormel::test {
namespace {

using ::testing::ElementsAre;
using ::testing::Pair;

TEST(Vocabulary, ParametersAreNumberedInTheOrderOfTheirNames) {
    EXPECT_EQ(std::size(kParameterNames), 106U);
    for (size_t i = 1; i < std::size(kParameterNames); ++i) {
        // virtual_bass_mix_frequency alone is out of order, and effects know it by its number.
        EXPECT_EQ(std::strcmp(kParameterNames[i - 1], kParameterNames[i]) < 0, i != 81) << i;
    }
    std::string names;
    for (const int number : {-1, 42, 80, 81, 82, 90, 105, 106}) {
        names.append(parameterName(number)).append(" ");
    }
    EXPECT_EQ(names,
              " ieq_id virtual_bass_mix_frequency virtual_bass_mix_freq_high "
              "virtual_bass_mix_freq_low virtual_bass_type volume_modeler_enable  ");
}

TEST(Vocabulary, EveryParameterButOneIsAcceptedByOneClass) {
    const std::tuple<const std::set<Parameter>&, size_t, int> classes[] = {
            {IeqPreset::kValidParams, 3, 126},
            {GeqPreset::kValidParams, 2, 57},
            {Profile::kValidParams, 12, 558},
            {ProfileEndpoint::kValidParams, 27, 1484},
            {Tuning::kValidParams, 61, 3250}};
    std::set<Parameter> all;
    for (const auto& [params, count, sum] : classes) {
        EXPECT_EQ(params.size(), count);
        EXPECT_EQ(std::accumulate(params.begin(), params.end(), 0), sum);
        all.insert(params.begin(), params.end());
    }
    EXPECT_TRUE(all.size() == 105 && all.count(VIRTUAL_BASS_TYPE) == 0);
}

TEST(Vocabulary, PortsAndEndpointsHaveNames) {
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
    // The document load asks like this, and what it asks for stays.
    EXPECT_EQ(kPortNameToAndroidDevice["hdmi"], 0);
    EXPECT_EQ(kPortNameToAndroidDevice.erase("hdmi"), 1U);
}

TEST(TuningObject, DumpsWhatWasSetInOrder) {
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

// A dump lists every parameter of the class, and leaves an empty list for it in the object.
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

TEST(TuningObject, DumpsAndKeepsEveryParameterOfItsClass) {
    expectFullDump(Profile(5, "x", true),
                   "id=-1\nprofileId=5\nname=x\nmobility=true\nselectedGeqPreset=5\n");
    expectFullDump(ProfileEndpoint(-9L, 5, ENDPOINT_HEADPHONE, 2),
                   "id=-9\nprofileId=5\nendpoint=headphone\nselectedIeqPreset=2\n");
    Tuning restored(7L, "t", ENDPOINT_OTHER, true, false);
    restored.setEndpoint("headphone");
    restored.setEndpoint("usb");
    expectFullDump(restored, "id=7\nname=t\nendpoint=headphone\nmono=true\nreadonly=false\n");
}

// Whether an object is dirty as made ('d' or '-'), and whether an operation marks a clean one.
template <typename Object, typename Operation, typename... Arguments>
std::string dirt(Object object, Operation operation, Arguments... arguments) {
    const bool made = object.isDirty();
    object.setDirty(false);
    (object.*operation)(arguments...);
    return std::string(made ? "d" : "-") + (object.isDirty() ? "d" : "-");
}

TEST(TuningObject, IsDirtyUnlessRestoredAndMarkedByMostChanges) {
    const ProfileEndpoint endpoint(8L, 1, ENDPOINT_OTHER, 0);
    const Tuning tuning(8L, "", ENDPOINT_OTHER, false, true);
    EXPECT_EQ(dirt(IeqPreset(8LL, 1, "a"), &IeqPreset::setName, "a"), "dd");
    EXPECT_EQ(dirt(GeqPreset(1), &GeqPreset::toString), "d-");
    EXPECT_EQ(dirt(GeqPreset(8LL, 1), &GeqPreset::set, PEAK_VALUE, std::vector<int>()), "-d");
    EXPECT_EQ(dirt(Profile(8LL, 1, "", false), &Profile::setMobility, true), "--");
    EXPECT_EQ(dirt(Profile(1, "", false), &Profile::setSelectedGeqPreset, 1), "dd");
    EXPECT_EQ(dirt(ProfileEndpoint(1, ENDPOINT_OTHER, 0), &ProfileEndpoint::toString), "d-");
    EXPECT_EQ(dirt(endpoint, &ProfileEndpoint::setSelectedIeqPreset, 0), "-d");
    EXPECT_EQ(dirt(Tuning("", ENDPOINT_OTHER, false), &Tuning::setMono, true), "d-");
    EXPECT_EQ(dirt(tuning, &Tuning::setEndpoint, "headphone"), "--");
    EXPECT_EQ(dirt(DeviceTuning(8LL, "", "", ""), &DeviceTuning::toString), "d-");
}

TEST(TuningObject, EqualsByItsKeyAndItsValues) {
    GeqPreset geq(8LL, 1);
    EXPECT_TRUE(geq.equals(GeqPreset(1)) && !geq.equals(GeqPreset(8LL, 2)));
    GeqPreset longer = geq;
    geq.set(GEQ_GAIN, {1});
    longer.set(GEQ_GAIN, {1, 1});
    EXPECT_FALSE(geq.equals(longer) || longer.equals(geq) || geq.equals(GeqPreset(1)));
    EXPECT_TRUE(Profile(1, "a", true).equals(Profile(8LL, 1, "b", false)));
    EXPECT_FALSE(Profile(1, "a", true).equals(Profile(2, "a", true)));
    Profile boosted(1, "a", true);
    boosted.set(PEAK_VALUE, {0});
    EXPECT_FALSE(boosted.equals(Profile(1, "a", true)));
    const ProfileEndpoint endpoint(1, ENDPOINT_OTHER, 2);
    EXPECT_TRUE(endpoint.equals(ProfileEndpoint(8L, 1, ENDPOINT_OTHER, 2)));
    EXPECT_FALSE(endpoint.equals(ProfileEndpoint(2, ENDPOINT_OTHER, 2)));
    EXPECT_FALSE(endpoint.equals(ProfileEndpoint(1, ENDPOINT_SPEAKER, 2)));
    EXPECT_FALSE(endpoint.equals(ProfileEndpoint(1, ENDPOINT_OTHER, 3)));
    ProfileEndpoint silenced = endpoint;
    silenced.set(IEQ_ENABLE, {0});
    EXPECT_FALSE(endpoint.equals(silenced));
}

TEST(DeviceData, ValidationSelectsNoPresetWhereTheEqualizerIsOff) {
    const std::pair<std::vector<int>, int> cases[] = {
            {{0}, 0}, {{0, 1}, 0}, {{1}, 2}, {{-1, 0}, 2}, {{}, 2}};
    for (const auto& [ieqEnable, selected] : cases) {
        ProfileEndpoint endpoint(1, ENDPOINT_SPEAKER, 2);
        ProfileEndpoint silent = endpoint;
        endpoint.set(IEQ_ENABLE, ieqEnable);
        endpoint.setDirty(false);
        DeviceData data;
        data.setProfileEndPoints({&endpoint, &silent});
        data.validateData();
        EXPECT_EQ(endpoint.getSelectedIeqPreset(), selected);
        EXPECT_EQ(endpoint.isDirty(), selected == 0);
        EXPECT_EQ(silent.getSelectedIeqPreset(), 2);
        EXPECT_EQ(silent.valuesToString(), "ieq_enable=\n");
    }
}

// Whether a set stays where it is when it is handed to its own setter.
template <typename Object>
bool keepsItself(const std::set<Object*>& (DeviceData::*get)() const,
                 void (DeviceData::*set)(const std::set<Object*>&), Object* object) {
    DeviceData data;
    (data.*set)({object});
    const auto first = (data.*get)().begin();
    (data.*set)((data.*get)());
    return (data.*get)().size() == 1 && (data.*get)().begin() == first && *first == object;
}

TEST(DeviceData, KeepsASetThatItIsGivenAgain) {
    using Data = DeviceData;
    IeqPreset ieq(0, "off");
    GeqPreset geq(1);
    Profile profile(1, "", false);
    ProfileEndpoint endpoint(1, ENDPOINT_SPEAKER, 2);
    Tuning tuning("", ENDPOINT_OTHER, false);
    DeviceTuning binding("", "", "");
    EXPECT_TRUE(keepsItself(&Data::getIeqPresets, &Data::setIeqPresets, &ieq));
    EXPECT_TRUE(keepsItself(&Data::getGeqPresets, &Data::setGeqPresets, &geq));
    EXPECT_TRUE(keepsItself(&Data::getProfiles, &Data::setProfiles, &profile));
    EXPECT_TRUE(keepsItself(&Data::getProfileEndpoints, &Data::setProfileEndPoints, &endpoint));
    EXPECT_TRUE(keepsItself(&Data::getTunings, &Data::setTunings, &tuning));
    EXPECT_TRUE(keepsItself(&Data::getDeviceTunings, &Data::setDeviceTunings, &binding));
}

}  // namespace
}  // namespace ormel::test
