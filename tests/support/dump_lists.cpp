// Writes a tuning document's lists, byte for byte, to standard output, so that the results of two
// processors can be compared: dump_lists FILE.
#include <ormel/SpatializerParamArray.h>

#include <cstdio>
#include <cstdlib>
#include <sstream>

namespace {

using ormel::SpatializerParamArray;

void write(const std::string& name, const std::vector<int32_t>& words) {
    std::printf("%s %zu\n", name.c_str(), words.size());
    std::fwrite(words.data(), sizeof(int32_t), words.size(), stdout);
    std::puts("");
}

/** @return number of entries in all lists */
int32_t writeLists(SpatializerParamArray& array) {
    int32_t entries = 0;
    write("channels", {array.getOutputChannelCount()});
    for (int profile = 0; profile < 4; ++profile) {
        const auto& list = array.getXMLProfileParams(profile);
        entries += list.empty() ? 0 : list[1];
        write("profile " + std::to_string(profile), list);
        write("gains", array.getProfileGeqGains(profile));
    }
    for (int port = ormel::PORT_INTERNAL_SPEAKER; port <= ormel::PORT_OTHER; ++port) {
        std::istringstream devices(array.getAvailableTuningDevices(port));
        for (std::string device; devices >> device;) {
            const auto& list = array.getXMLTuningParams(device);
            entries += list.empty() ? 0 : list[1];
            write("device " + device, list);
            write("mix matrix", array.getXMLTuningMixMatrix(device));
        }
    }
    return entries;
}

}  // namespace

int main(int argc, char* argv[]) {
    if (argc != 2) {
        return EXIT_FAILURE;
    }
    SpatializerParamArray array;
    array.loadSpatializerXMLFile(argv[1]);
    return writeLists(array) > 0 && std::fflush(stdout) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
