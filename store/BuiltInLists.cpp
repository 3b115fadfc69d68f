// The settings for the maker's own content, as packed lists built at compile time.
#include <ormel/KivParameter.h>
#include <ormel/SpatializerParamArray.h>

namespace ormel {

namespace {

/** The last part of the speaker's output mode, which this library does not interpret. */
constexpr std::array<int32_t, 58> kMixMatrix = {
        15,    24,                                                           //
        16384, 0,  0, 16384, 11583, 11583, 8192, 8192,  16384, 0, 0, 16384,  //
        16384, 0,  0, 16384, 16384, 0,     0,    16384, 16384, 0, 0, 16384,  //
        11,    16,                                                           //
        16384, 0,  0, 16384, 11583, 11583, 8192, 8192,  16384, 0, 0, 16384,  //
        16384, 0,  0, 16384,                                                 //
        10,    12,                                                           //
        16384, 0,  0, 16384, 11583, 11583, 8192, 8192,  16384, 0, 0, 16384};

/** The number of bands, their 20 frequencies, and their targets. */
constexpr std::array<int32_t, 41> kIeqBands = {
        20,                                                             //
        47,   141,  234,  328,  469,  656,  844,  1031,  1313,  1688,   //
        2250, 3000, 3750, 4688, 5813, 7125, 9000, 11250, 13875, 19688,  //
        157,  167,  218,  218,  203,  188,  192,  192,   205,   213,    //
        218,  209,  193,  159,  134,  97,   71,   22,    -90,   -283};

constexpr size_t kProfiles = 4;

/** A single-value entry, with its value for each profile. */
struct ProfileRow {
    KivParameter param;
    int32_t values[kProfiles];
};

//                                              dynamic movie music custom
constexpr ProfileRow kAllDevicesRows[] = {{MDLE, {1, 0, 0, 0}},  //
                                          {MIEE, {1, 0, 0, 0}}};
constexpr std::array<int32_t, 8> kRenderingConfigs[kProfiles] = {
        {103, 32568, 11164, 5090, 0, 3, 3, 3},
        {103, 32568, 11164, 5090, 0, 1, 2, 2},
        {103, 32568, 11164, 5090, 0, 3, 3, 3},
        {103, 32568, 11164, 5090, 0, 1, 1, 1}};
constexpr ProfileRow kSpeakerRows[] = {{IEON, {1, 0, 1, 0}},    //
                                       {MDEE, {1, 1, 0, 1}},    //
                                       {DEON, {1, 1, 0, 1}},    //
                                       {DEA, {2, 4, 0, 4}},     //
                                       {DSB, {64, 88, 64, 0}},  //
                                       {VMB, {64, 64, 32, 64}}};
constexpr ProfileRow kHeadphoneRows[] = {{IEON, {1, 0, 1, 0}},  //
                                         {MDEE, {1, 1, 0, 1}},  //
                                         {DEON, {1, 1, 0, 1}},  //
                                         {DEA, {2, 4, 0, 4}},   //
                                         {DSB, {0, 0, 0, 0}},   //
                                         {VMB, {16, 16, 0, 16}}};

/** A single-value entry, the same for every profile. */
struct CommonRow {
    KivParameter param;
    int32_t value;
};

constexpr CommonRow kCommonAllDevicesRows[] = {{MAVE, 0},  {MSCE, 0}, {DVME, 0},
                                               {RVSE, 0},  {RVSA, 0}, {SDFA, 0},
                                               {HLRA, 45}, {HVM, 2},  {DRCM, 0}};
// A device's rows between its intelligent-equalizer bands and its output mode.
constexpr CommonRow kCommonDeviceRows[] = {{IEA, 6},  {PLB, 0},     {DED, 2},
                                           {MVBE, 0}, {NGON, 1},    {DVLE, 0},
                                           {DVLA, 0}, {DVLI, -256}, {DVLO, -256}};
constexpr std::array<int32_t, 3> kSpeakerMode = {1, ENDPOINT_SPEAKER, kSpeakerOrientation};
constexpr std::array<int32_t, 3> kHeadphoneMode = {1, ENDPOINT_HEADPHONE, kHeadphoneOrientation};
constexpr CommonRow kSteererDistance = {VSSD, 4};

/** Builds a packed list. */
template <size_t kWords>
class ListWriter {
  public:
    constexpr explicit ListWriter(OrmSpatializerProfileId profile) { mWords[0] = profile; }

    constexpr void beginEntry(int32_t device, KivParameter param, size_t valueCount) {
        put(device);
        put(kivCode(param));
        put(static_cast<int32_t>(valueCount));
        ++mWords[1];
    }

    template <typename Values>
    constexpr void putAll(const Values& values) {
        for (const int32_t value : values) {
            put(value);
        }
    }

    constexpr void add(int32_t device, KivParameter param, int32_t value) {
        beginEntry(device, param, 1);
        put(value);
    }

    template <typename Values>
    constexpr void addList(int32_t device, KivParameter param, const Values& values) {
        beginEntry(device, param, values.size());
        putAll(values);
    }

    constexpr size_t size() const { return mSize; }
    constexpr const std::array<int32_t, kWords>& words() const { return mWords; }

  private:
    constexpr void put(int32_t word) { mWords[mSize++] = word; }

    std::array<int32_t, kWords> mWords{};
    size_t mSize = 2;
};

constexpr auto layOutProfile(OrmSpatializerProfileId profile) {
    ListWriter<SpatializerParamArray::kProfileWords> list(profile);
    const auto column = static_cast<size_t>(profile);
    for (const ProfileRow& row : kAllDevicesRows) {
        list.add(DEVICE_OUT_DEFAULT, row.param, row.values[column]);
    }
    list.addList(DEVICE_OUT_DEFAULT, HVRC, kRenderingConfigs[column]);
    for (const ProfileRow& row : kSpeakerRows) {
        list.add(DEVICE_OUT_SPEAKER, row.param, row.values[column]);
    }
    for (const AndroidDevice device : kHeadphoneDevices) {
        for (const ProfileRow& row : kHeadphoneRows) {
            list.add(device, row.param, row.values[column]);
        }
    }
    return list;
}

/** Adds the entries of one device that come before its output mode. */
template <typename List>
constexpr void layOutCommonDevice(List& list, int32_t device) {
    list.addList(device, IEBS, kIeqBands);
    for (const CommonRow& row : kCommonDeviceRows) {
        list.add(device, row.param, row.value);
    }
}

constexpr auto layOutCommon() {
    ListWriter<SpatializerParamArray::kCommonWords> list(ORM_SPATIALIZER_PROFILE_COMMON);
    for (const CommonRow& row : kCommonAllDevicesRows) {
        list.add(DEVICE_OUT_DEFAULT, row.param, row.value);
    }
    layOutCommonDevice(list, DEVICE_OUT_SPEAKER);
    list.beginEntry(DEVICE_OUT_SPEAKER, DOM, kSpeakerMode.size() + kMixMatrix.size());
    list.putAll(kSpeakerMode);
    list.putAll(kMixMatrix);
    list.add(DEVICE_OUT_SPEAKER, kSteererDistance.param, kSteererDistance.value);
    for (const AndroidDevice device : kHeadphoneDevices) {
        layOutCommonDevice(list, device);
        list.addList(device, DOM, kHeadphoneMode);
        list.add(device, kSteererDistance.param, kSteererDistance.value);
    }
    return list;
}

constexpr auto kDynamic = layOutProfile(ORM_SPATIALIZER_PROFILE_DYNAMIC);
constexpr auto kMovie = layOutProfile(ORM_SPATIALIZER_PROFILE_MOVIE);
constexpr auto kMusic = layOutProfile(ORM_SPATIALIZER_PROFILE_MUSIC);
constexpr auto kCustom = layOutProfile(ORM_SPATIALIZER_PROFILE_CUSTOM);
constexpr auto kCommon = layOutCommon();

static_assert(kDynamic.size() == SpatializerParamArray::kProfileWords && kDynamic.words()[1] == 27);
static_assert(kCommon.size() == SpatializerParamArray::kCommonWords && kCommon.words()[1] == 57);

}  // namespace

const std::array<int32_t, SpatializerParamArray::kProfileWords>
        SpatializerParamArray::mDynamicProfileParams = kDynamic.words();
const std::array<int32_t, SpatializerParamArray::kProfileWords>
        SpatializerParamArray::mMovieProfileParams = kMovie.words();
const std::array<int32_t, SpatializerParamArray::kProfileWords>
        SpatializerParamArray::mMusicProfileParams = kMusic.words();
const std::array<int32_t, SpatializerParamArray::kProfileWords>
        SpatializerParamArray::mCustomProfileParams = kCustom.words();
const std::array<int32_t, SpatializerParamArray::kCommonWords>
        SpatializerParamArray::mCommonParams = kCommon.words();
const std::array<int32_t, 58> SpatializerParamArray::kDefaultMixMatrix = kMixMatrix;

}  // namespace ormel
