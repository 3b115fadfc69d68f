#include "CheckRules.h"

#include <algorithm>
#include <utility>

namespace ormel::tools {

namespace {

constexpr Severity E = Severity::ERROR;
constexpr Severity W = Severity::WARNING;

constexpr RuleRow kRules[] = {
        {Rule::COMPRESSED, "compressed", E,
         "The file is compressed. Whether an XML library unpacks it depends on how that was built; "
         "a device's does not.",
         "Ship the document unpacked."},
        {Rule::ENCODING, "encoding", E,
         "The document is in an encoding that an XML library without converters does not read.",
         "Save it as UTF-8 and declare that. UTF-16, ISO-8859-1 and ASCII are read as well."},
        {Rule::NOT_WELL_FORMED, "not-well-formed", E,
         "The document is no well-formed XML. The library then goes by its built-in lists alone.",
         "Mend what the XML library complains of, the first complaint first."},
        {Rule::REFUSED, "refused", E,
         "The library gives up reading the document, which costs more than its size allows, and "
         "goes by its built-in lists alone. Elements without children make it read others over and "
         "over; or values and names come to more than it takes.",
         "Give the elements around this line the children they should have, or split what is that "
         "large."},
        {Rule::SCHEMA, "schema", E, "The document does not keep to the schema of tuning documents.",
         "Write what schema/spatializer-tuning.xsd says of the element."},
        {Rule::ENTITY_REFERENCE, "entity-reference", E,
         "Elements that come from an entity are not read: the reader leaves references closed.",
         "Write out what the entity stands for."},
        {Rule::UNKNOWN_ELEMENT, "unknown-element", W,
         "The reader passes over an element whose name it does not know where it stands.",
         "Correct the name, or remove the element; names are compared letter by letter."},
        {Rule::UNKNOWN_ATTRIBUTE, "unknown-attribute", W,
         "The reader does not look at this attribute of the element.",
         "Correct the name, or remove the attribute; of a row only the first attribute counts."},
        {Rule::UNREAD_ELEMENT, "unread-element", E,
         "The reader never comes to the element, since it looks for one like it elsewhere or only "
         "once.",
         "Move it to where it is read: device_id ahead of the data, and one element of data per "
         "section."},
        {Rule::LOST_FIRST_CHILD, "lost-first-child", E,
         "The element follows its parent's start tag without whitespace. The reader takes the "
         "second node below an element for the first child, so this element is lost.",
         "Put a line break between the two tags."},
        {Rule::CHILDLESS, "childless", E,
         "The element has no children, so the reader goes on with the element itself and what "
         "follows it, and takes those for the children.",
         "Give it the children it should have, or remove it."},
        {Rule::TUNING_WITHOUT_DATA, "tuning-without-data", E,
         "The tuning has no data element. It is dropped, and the reader stops: every section that "
         "follows is left unread.",
         "Give the tuning a data element behind its device_id elements, or remove it."},
        {Rule::WRONG_SECTION, "wrong-section", W,
         "The parameter is read into a section whose kind does not accept it, and is never sent.",
         "Move the element to a section of the kind that accepts it."},
        {Rule::MISSING_ATTRIBUTE, "missing-attribute", E,
         "An attribute that the reader takes a value from is missing or empty, which reads as 0, "
         "as no name, or as no values.",
         "Add the attribute."},
        {Rule::NOT_A_NUMBER, "not-a-number", E,
         "The text is not wholly a whole number in base 10. The reader takes the leading digits, "
         "or 0 where there are none.",
         "Write a whole number in base 10 and nothing else."},
        {Rule::MISSPELT_BOOLEAN, "misspelt-boolean", E,
         "The text means true or false but is not spelt so, and reads as 0, whatever it means.",
         "Write true or false, in small letters and without blanks."},
        {Rule::OUT_OF_RANGE, "out-of-range", E,
         "The number does not fit 32 bits. Alone it becomes the nearest one that does; in a row or "
         "a column of bands it ends it.",
         "Write a number from -2147483648 to 2147483647."},
        {Rule::ROW_CUT, "row-cut", E,
         "A character ends the row early, and the rest of it is lost. Only whitespace, or a comma "
         "right behind a number, may stand between numbers.",
         "Write whole numbers, each but the last with a comma behind it."},
        {Rule::SHORT_COLUMN, "short-column", E,
         "A band lacks an attribute or has no number in it. That ends the attribute's column at "
         "this band, so the columns are cut or of unequal length.",
         "Give every band all of its attributes."},
        {Rule::UNEQUAL_COLUMNS, "unequal-columns", E,
         "The lists of the channels are not equally long. They are sent one behind the other with "
         "the length of the left one, so nothing tells the effect where the others begin.",
         "Give every channel as many values as the left one."},
        {Rule::GEQ_BAND_COUNT, "geq-band-count", E,
         "A graphic-equalizer preset that is not 20 bands wide is dropped when its profile is "
         "applied.",
         "Give the preset 20 bands."},
        {Rule::BAND_DEPTH, "band-depth", E,
         "The bands of the preset do not lie three elements below it, where the reader looks for "
         "them, so none is read.",
         "Write preset, data, ieq-bands or geq-bands, and in that the bands; the first node in "
         "each but whitespace must be the next of them, not even a comment."},
        {Rule::IEQ_BAND_NAME, "ieq-band-name", E,
         "An element among the bands of an intelligent-equalizer preset is no band_ieq. It ends "
         "the bands.",
         "Name every band band_ieq, and keep other elements out."},
        {Rule::INCLUDE_POSITION, "include-position", E,
         "The include does not stand where the reader looks for it, so it chooses no preset: "
         "formats 3.2. look at the second element of the profile, later ones at the first element "
         "of each endpoint, and a comment counts as an element.",
         "Move the include to that place."},
        {Rule::UNKNOWN_PRESET, "unknown-preset", E,
         "The preset is named or numbered as none is. A wrong name reads as preset 0; a number "
         "that no preset has leaves the endpoint with the preset of the one before it.",
         "Name a preset that the document has; formats 3.2. and 3.3.0 know off, detailed, balanced "
         "and warm."},
        {Rule::UNKNOWN_PRESET_TYPE, "unknown-preset-type", E,
         "The preset's type is neither ieq nor geq, so the preset is passed over.",
         "Write type=\"ieq\" or type=\"geq\"."},
        {Rule::LATE_IEQ, "late-ieq", E,
         "In formats 3.2. the profile's ieq values reach only the endpoints that come after them; "
         "those before this one go without.",
         "Move ieq-enable and ieq-amount ahead of the endpoint_type elements."},
        {Rule::OVERWRITTEN, "overwritten", W,
         "The format version gives this parameter a value of its own, whatever the document says.",
         "Write the value that stands in the end or nothing, or raise the format version."},
        {Rule::REPEATED_VALUE, "repeated-value", W,
         "The section gives the same parameter twice. The last one stands.",
         "Remove one of the two."},
        {Rule::REPEATED_PROFILE, "repeated-profile", E,
         "Two profiles have one id. The first one stands, and gets the endpoints of both.",
         "Give each profile an id of its own."},
        {Rule::REPEATED_ENDPOINT, "repeated-endpoint", W,
         "A profile has two endpoints for the same kind of output. Both are sent, so the values of "
         "the last one stand.",
         "Remove one of the two, or merge them."},
        {Rule::REPEATED_PRESET, "repeated-preset", E,
         "Two presets of one type have one id. Of intelligent-equalizer presets the first one "
         "stands; of graphic-equalizer presets both are sent.",
         "Give each preset an id of its own."},
        {Rule::REPEATED_DEVICE, "repeated-device", E,
         "Two device_id elements have one id. The last one stands.",
         "Give each device_id an id of its own."},
        {Rule::REPEATED_TUNING, "repeated-tuning", E,
         "Two tunings have one name. Devices of either get the first one.",
         "Give each tuning a name of its own."},
        {Rule::UNKNOWN_ENDPOINT, "unknown-endpoint", E,
         "The endpoint is neither speaker, headphone nor other. In a profile it counts as other, "
         "which is never sent; in a tuning as speaker.",
         "Write speaker, headphone or other, in small letters."},
        {Rule::UNKNOWN_PORT, "unknown-port", E,
         "There is no such port. The tuning device can be selected on none, and its list is "
         "addressed to no output device.",
         "Write one of the ports internal_speaker, headphone, bluetooth and usb."},
        {Rule::UNSUPPORTED_PORT, "unsupported-port", W,
         "The port has no output device that a tuning could be sent to.",
         "Bind the tuning to internal_speaker, headphone, bluetooth or usb."},
        {Rule::MISSING_DEFAULT_DEVICE, "missing-default-device", W,
         "A port lacks the tuning device that is selected on it from the start, so no tuning is "
         "loaded for it until another one is selected.",
         "Add a device_id of that name and port to the tuning that the port should start with."},
        {Rule::MIX_MATRIX_LENGTH, "mix-matrix-length", E,
         "The mix matrix is not as long as the built-in one. When it takes another one's place in "
         "a "
         "profile's list, the effect still gets the number of values of that list. An empty one is "
         "replaced by the built-in one.",
         "Write as many values as the built-in matrix has, 58."},
        {Rule::CHANNELS_NOT_SENT, "channels-not-sent", E,
         "The tuning has optimizer bands, a complex equalizer or sibilance suppression, which are "
         "sent for two and four channels only, and has another number of them.",
         "Write output_channels=\"2\" or \"4\", or remove what cannot be sent."},
};

constexpr bool isInOrder() {
    size_t place = 0;
    for (const RuleRow& row : kRules) {
        if (static_cast<size_t>(row.rule) != place++) {
            return false;
        }
    }
    return place == kRuleCount;
}
static_assert(isInOrder(), "each rule has its row at its place");

}  // namespace

const char* severityName(Severity severity) {
    return severity == Severity::ERROR ? "error" : "warning";
}

const std::vector<RuleRow>& allRules() {
    static const auto& rules = *new std::vector<RuleRow>(std::begin(kRules), std::end(kRules));
    return rules;
}

const RuleRow& rowOf(Rule rule) {
    return kRules[static_cast<size_t>(rule)];
}

const RuleRow* findRule(const std::string& id) {
    const auto* const end = std::end(kRules);
    const auto* const found = std::find_if(std::begin(kRules), end,
                                           [&id](const RuleRow& row) { return id == row.id; });
    return found == end ? nullptr : found;
}

void Findings::add(Finding finding) {
    if (++mCounts[static_cast<size_t>(finding.rule)] <= kMaxPerRule) {
        mFindings.push_back(std::move(finding));
    }
}

const std::vector<Finding>& Findings::sorted() {
    std::stable_sort(mFindings.begin(), mFindings.end(),
                     [](const Finding& a, const Finding& b) { return a.line < b.line; });
    return mFindings;
}

size_t Findings::countOf(Severity severity) const {
    size_t count = 0;
    for (const RuleRow& row : kRules) {
        count += row.severity == severity ? countOf(row.rule) : 0;
    }
    return count;
}

}  // namespace ormel::tools
