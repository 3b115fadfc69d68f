// Prints the fuzzers' dictionary: complete constructs of tuning documents, from the library's
// tables.
#include <ormel/TuningFileParser.h>

#include <cstdio>
#include <string>

namespace {

void entry(const std::string& text) {
    std::string escaped;
    for (const char character : text) {
        if (character == '"' || character == '\\') {
            escaped += '\\';
        }
        escaped += character;
    }
    std::printf("\"%s\"\n", escaped.c_str());
}

template <typename Names>
std::string bandOf(const std::string& element, const Names& names) {
    std::string band = "<" + element;
    for (const char* const name : names) {
        band += std::string(" ") + name + "=\"100\"";
    }
    return band + "/> ";
}

}  // namespace

int main() {
    using namespace ormel;
    for (ValueSetter* const setter : SetterCollection::kAllValueSetters) {
        entry("<" + setter->getNodeName() + " value=\"1\"/> ");
        entry("<" + setter->getNodeName() + " value=\"1,2,3\"> ");
        entry("</" + setter->getNodeName() + "> ");
    }
    entry(bandOf("band_ieq", IeqValueSetter::kAttrNames));
    entry(bandOf("band_geq", GeqValueSetter::kAttrNames));
    entry(bandOf("band", AudioOptimizerValueSetter::kAttrNames));
    entry(bandOf("band", RegulatorTuningValueSetter::kAttrNames));
    entry(bandOf("virtual-bass-mix-freqs", VirtualBassValueSetter::kAttrNames));
    for (const char* const preset : kIeqPresetNames) {
        entry(std::string("<include preset=\"") + preset + "\"/> ");
        entry(std::string("<preset type=\"ieq\" id=\"") + preset + "\"> ");
    }
    for (const char* const endpoint : kEndpointNames) {
        entry(std::string("<endpoint_type id=\"") + endpoint + "\"> ");
        entry(std::string("endpoint_type=\"") + endpoint + "\"");
    }
    for (const char* const port : kPortNames) {
        entry(std::string("<device_id id=\"default_") + port + "\" endpoint_port=\"" + port +
              "\"/> ");
    }
    for (const char* const construct :
         {"<preset type=\"ieq\" id=\"1\" name=\"a\"> ",
          "<preset type=\"geq\" id=\"1\"> ",
          "</preset> ",
          "<profile id=\"1\" name=\"a\" group=\"mobility\"> ",
          "<profile/> ",
          "</profile> ",
          "</endpoint_type> ",
          "<include ieq_preset=\"1\"/> ",
          "<tuning name=\"a\" output_channels=\"4\"> ",
          "<tuning name=\"a\" output_channels=\"2\" mono_device=\"true\"> ",
          "</tuning> ",
          "<data> ",
          "</data> ",
          "<output-mode> <m> <r v=\"1,2,3\"/> </m> </output-mode> ",
          "<format_version major=\"3\" minor=\"2\" maintenance=\"2\"/> ",
          "<format_version major=\"3\" minor=\"3\" maintenance=\"0\"/> ",
          "<format_version major=\"3\" minor=\"4\" maintenance=\"0\"/> ",
          "<tool_version major=\"1\"/> ",
          "<authorized_technologies> ",
          "</authorized_technologies> ",
          "<global_setting device_name=\"a\"/> ",
          "<global_setting device_index=\"1\" tuning_version=\"2\"/> ",
          "<global_setting virtual_bass_process=\"5\" altivo_game_system_gain=\"6\"/> ",
          "<!DOCTYPE d [<!ENTITY e \"<profile/>\">]>",
          "&e;",
          "<?profile x?>",
          "<!-- c -->",
          "<![CDATA[ ]]>",
          "xml:lang=\"a\"",
          "-2147483649",
          "0x10",
          "true"}) {
        entry(construct);
    }
    return 0;
}
