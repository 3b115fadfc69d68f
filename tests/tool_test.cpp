#include <gmock/gmock.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <string>
#include <utility>

namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;

const std::string kTablet = "apply " ORMEL_EXAMPLES "/tablet-quad.xml --profile movie ";

/** Runs the tool. Its exit status, and what it writes to stdout and stderr. */
std::pair<int, std::string> run(const std::string& arguments) {
    FILE* const pipe = ::popen((ORMEL_TUNING " " + arguments + " 2>&1").c_str(), "r");
    std::string output;
    std::array<char, 4096> buffer{};
    while (std::fgets(buffer.data(), static_cast<int>(buffer.size()), pipe) != nullptr) {
        output += buffer.data();
    }
    const int status = ::pclose(pipe);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output};
}

TEST(ApplyTest, ShowsEveryCallInOrder) {
    const auto [status, output] = run(kTablet + "--ormel-content --tuning usb=default_usb");
    EXPECT_EQ(status, 0);
    EXPECT_THAT(output, ::testing::StartsWith(R"(setSelectedTuningDevice(usb, default_usb)
  no calls
  returned 0
setProfile(movie, isOrmelContent=true)
)"));
    EXPECT_THAT(output, HasSubstr(R"(
  set    all devices      gebs    [41]  graphic equalizer bands: count, frequencies, gains
                                20, 47, 141, 234, 328, 469, 656, 844, 1031, 1313, 1688, 2250, 3000,
                                3750, 4688, 5813, 7125, 9000, 11250, 13875, 19688, 35, 16, -7, -16,
                                -11, -4, 1, 4, 10, 16, 25, 23, 18, 17, 17, 15, 18, 17, 14, 6
)"));
    EXPECT_THAT(output, HasSubstr("\n  read   speaker          dom     [61]  output mode: "));
    EXPECT_THAT(output, HasSubstr("\n  returned 0\nloadTuning()\n  set    speaker "));
    EXPECT_THAT(output,
                HasSubstr("\n  set    Bluetooth A2DP   vbog     -64  virtual bass overall "));
    EXPECT_THAT(output, EndsWith("\n  commit all devices\n  returned 0\n"));
}

TEST(ApplyTest, SaysWhatItCannotDo) {
    const std::pair<std::string, std::string> failures[] = {
            {"apply", "FILE is required\nRun with --help for more information."},
            {"apply x --profile 1", "ormel-tuning: x: No such file or directory"},
            {"apply /dev/null --profile 1", "/dev/null: cannot be loaded as a tuning document"},
            {"apply x --profile film",
             ": unknown profile 'film'; there are dynamic, movie, music, custom"},
            {kTablet + "--tuning usb", "ormel-tuning: 'usb' is not PORT=DEVICE"},
            {kTablet + "--tuning line=x",
             ": unknown port 'line'; there are internal_speaker, hdmi, miracast, headphone, "
             "bluetooth, usb, other"},
            {kTablet + "--tuning usb=x",
             ": unknown tuning device 'x' for port usb; there are default_usb"},
    };
    for (const auto& [arguments, end] : failures) {
        const auto [status, output] = run(arguments);
        EXPECT_EQ(status, 2) << arguments;
        EXPECT_THAT(output, EndsWith(end + "\n"));
    }
}

}  // namespace
