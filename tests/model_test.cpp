// The vocabulary of tunings, and the objects that a tuning document describes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <ormel/DeviceData.h>

#include <cstring>
#include <numeric>

namespace ormel::test {
namespace {

using ::testing::ElementsAre;

TEST(Vocabulary, ParametersAreNumberedInTheOrderOfTheirNames) {
    EXPECT_EQ(std::size(kParameterNames), 106U);
    std::vector<size_t> descents;
    for (size_t i = 1; i < std::size(kParameterNames); ++i) {
        if (std::strcmp(kParameterNames[i - 1], kParameterNames[i]) >= 0) {
            descents.push_back(i);
        }
    }
    // virtual_bass_mix_frequency alone is out of order, and effects know it by its number.
    EXPECT_THAT(descents, ElementsAre(81));
    EXPECT_THAT((std::vector<int>{IEQ_ID, VIRTUAL_BASS_MIX_FREQUENCY, VIRTUAL_BASS_TYPE}),
                ElementsAre(42, 80, 90));
    std::string names;
    for (const int number : {-1, 0, 42, 80, 81, 82, 90, 105, 106}) {
        names.append(parameterName(number)).append(" ");
    }
    EXPECT_EQ(names,
              " advanced_headphone_virtualizer_lr_angle ieq_id virtual_bass_mix_frequency "
              "virtual_bass_mix_freq_high virtual_bass_mix_freq_low virtual_bass_type "
              "volume_modeler_enable  ");
}

TEST(Vocabulary, EveryParameterButOneIsAcceptedByOneClass) {
    const IeqPreset ieq(0, "");
    const GeqPreset geq(0);
    const Profile profile(0, "", false);
    const ProfileEndpoint endpoint(0, ENDPOINT_SPEAKER, 0);
    const Tuning tuning("", ENDPOINT_SPEAKER, false);
    const std::tuple<const ParameterValues&, const std::set<Parameter>&, size_t, int> classes[] = {
            {ieq, IeqPreset::kValidParams, 3, 126},
            {geq, GeqPreset::kValidParams, 2, 57},
            {profile, Profile::kValidParams, 12, 558},
            {endpoint, ProfileEndpoint::kValidParams, 27, 1484},
            {tuning, Tuning::kValidParams, 61, 3250}};
    std::set<Parameter> all;
    for (const auto& [object, params, count, sum] : classes) {
        EXPECT_EQ(object.getValidParams(), params);
        EXPECT_EQ(params.size(), count);
        EXPECT_EQ(std::accumulate(params.begin(), params.end(), 0), sum);
        all.insert(params.begin(), params.end());
    }
    EXPECT_EQ(all.size(), 105U);
    EXPECT_EQ(all.count(VIRTUAL_BASS_TYPE), 0U);
}

template <typename Map>
std::string listed(const Map& numbers) {
    std::string text;
    for (const auto& [name, number] : numbers) {
        text += name + "=" + std::to_string(number) + " ";
    }
    return text;
}

TEST(Vocabulary, PortsAndEndpointsHaveNames) {
    EXPECT_THAT(kEndpointNames, ElementsAre("speaker", "headphone", "other"));
    EXPECT_THAT(kPortNames, ElementsAre("internal_speaker", "hdmi", "miracast", "headphone",
                                        "bluetooth", "usb", "other"));
    EXPECT_THAT(kIeqPresetNames, ElementsAre("off", "detailed", "balanced", "warm"));
    EXPECT_EQ(listed(Tuning::kEndpNameToEndpoint), "headphone=1 other=2 speaker=0 ");
    EXPECT_EQ(listed(kPortNameToEndpoint),
              "bluetooth=1 hdmi=2 headphone=1 internal_speaker=0 miracast=2 other=2 usb=1 ");
    EXPECT_EQ(listed(kPortNameToAndroidDevice),
              "bluetooth=128 headphone=8 internal_speaker=2 usb=16384 ");
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

/** Dumps a clean object, which must list every parameter, all but the first unset, and keep it. */
template <typename Object>
void expectFullDump(Object object, const std::string& fields) {
    std::string expected = fields;
    for (const Parameter param : Object::kValidParams) {
        const bool isFirst = param == *Object::kValidParams.begin();
        expected.append(parameterName(param)).append(isFirst ? "=7,-8,\n" : "=\n");
    }
    object.set(*Object::kValidParams.begin(), {7, -8});
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
    expectFullDump(Tuning("t", ENDPOINT_SPEAKER, false),
                   "id=-1\nname=t\nendpoint=speaker\nmono=false\nreadonly=true\n");
    expectFullDump(Tuning(7L, "t", ENDPOINT_OTHER, true, false),
                   "id=7\nname=t\nendpoint=other\nmono=true\nreadonly=false\n");
}

/** Whether an object is dirty as made ('d' or '-'), and whether a change marks a clean one. */
template <typename Object, typename Change>
std::string dirtiness(Object object, Change change) {
    const std::string made = object.isDirty() ? "d" : "-";
    object.setDirty(false);
    change(object);
    return made + (object.isDirty() ? "d" : "-");
}

TEST(TuningObject, IsDirtyUnlessRestoredAndMarkedByMostChanges) {
    const auto set = [](auto& changed) { changed.set(ORIENTATION, {}); };
    const auto rename = [](auto& changed) { changed.setName("a"); };
    const auto nothing = [](auto&) {};
    EXPECT_EQ(dirtiness(IeqPreset(1, "a"), rename), "dd");
    EXPECT_EQ(dirtiness(IeqPreset(8LL, 1, "a"), nothing), "d-");
    EXPECT_EQ(dirtiness(GeqPreset(1), nothing), "d-");
    EXPECT_EQ(dirtiness(GeqPreset(8LL, 1), set), "-d");
    EXPECT_EQ(dirtiness(Profile(1, "a", false), rename), "dd");
    EXPECT_EQ(dirtiness(Profile(8LL, 1, "", false), [](auto& p) { p.setMobility(true); }), "--");
    EXPECT_EQ(dirtiness(Profile(1, "", false), [](auto& p) { p.setSelectedGeqPreset(1); }), "dd");
    EXPECT_EQ(dirtiness(ProfileEndpoint(1, ENDPOINT_OTHER, 0), nothing), "d-");
    EXPECT_EQ(dirtiness(ProfileEndpoint(8L, 1, ENDPOINT_OTHER, 0),
                        [](auto& endpoint) { endpoint.setSelectedIeqPreset(0); }),
              "-d");
    EXPECT_EQ(dirtiness(Tuning("", ENDPOINT_OTHER, false), [](auto& t) { t.setMono(true); }), "d-");
    EXPECT_EQ(dirtiness(Tuning(8L, "", ENDPOINT_OTHER, false, true),
                        [](auto& tuning) {
                            tuning.setEndpoint("headphone");
                            tuning.setEndpoint("usb");
                            EXPECT_EQ(tuning.getEndpoint(), ENDPOINT_HEADPHONE);
                        }),
              "--");
    EXPECT_EQ(dirtiness(DeviceTuning("", "", ""), nothing), "d-");
    EXPECT_EQ(dirtiness(DeviceTuning(8LL, "", "", ""), nothing), "d-");
}

TEST(TuningObject, EqualsByItsKeyAndItsValues) {
    GeqPreset geq(8LL, 1);
    EXPECT_TRUE(geq.equals(GeqPreset(1)));
    EXPECT_FALSE(geq.equals(GeqPreset(8LL, 2)));
    GeqPreset longer = geq;
    geq.set(GEQ_GAIN, {1});
    longer.set(GEQ_GAIN, {1, 1});
    EXPECT_FALSE(geq.equals(longer) || longer.equals(geq) || geq.equals(GeqPreset(1)));
    Profile profile(1, "a", true);
    profile.setSelectedGeqPreset(3);
    EXPECT_TRUE(profile.equals(Profile(8LL, 1, "b", false)));
    EXPECT_FALSE(profile.equals(Profile(2, "a", true)));
    const ProfileEndpoint endpoint(1, ENDPOINT_OTHER, 2);
    EXPECT_TRUE(endpoint.equals(ProfileEndpoint(8L, 1, ENDPOINT_OTHER, 2)));
    EXPECT_FALSE(endpoint.equals(ProfileEndpoint(2, ENDPOINT_OTHER, 2)) ||
                 endpoint.equals(ProfileEndpoint(1, ENDPOINT_SPEAKER, 2)) ||
                 endpoint.equals(ProfileEndpoint(1, ENDPOINT_OTHER, 3)));
}

TEST(DeviceData, ListsWithoutOwning) {
    Profile profile(1, "a", true);
    {
        DeviceData data;
        EXPECT_EQ(data.getFormatVersion() + data.getDeviceName() + data.getSignature(), "");
        EXPECT_EQ(data.getAltivoGameSystemGain(), 0);
        std::set<Profile*> profiles = {&profile};
        data.setProfiles(profiles);
        data.setProfiles(data.getProfiles());
        profiles.clear();
        EXPECT_THAT(data.getProfiles(), ElementsAre(&profile));
    }
    EXPECT_EQ(profile.getName(), "a");
}

TEST(DeviceData, ValidationSelectsNoPresetWhereTheEqualizerIsOff) {
    const std::tuple<std::vector<int>, int, bool> cases[] = {
            {{0}, 0, true}, {{0, 1}, 0, true}, {{1}, 2, false}, {{-1, 0}, 2, false}, {{}, 2, false}};
    for (const auto& [ieqEnable, selected, dirty] : cases) {
        ProfileEndpoint endpoint(1, ENDPOINT_SPEAKER, 2);
        endpoint.set(IEQ_ENABLE, ieqEnable);
        endpoint.setDirty(false);
        ProfileEndpoint silent(8L, 1, ENDPOINT_SPEAKER, 2);
        DeviceData data;
        data.setProfileEndPoints({&endpoint, &silent});
        data.validateData();
        EXPECT_EQ(endpoint.getSelectedIeqPreset(), selected);
        EXPECT_EQ(endpoint.isDirty(), dirty);
        EXPECT_EQ(silent.getSelectedIeqPreset(), 2);
        EXPECT_EQ(silent.valuesToString(), "ieq_enable=\n");
    }
}

}  // namespace
}  // namespace ormel::test
