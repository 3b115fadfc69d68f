#include "ReadTrace.h"

#include <libxml/parser.h>
#include <ormel/VersionRules.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

#include "XmlTree.h"

namespace ormel::tools {

namespace {

using SetterMap = std::unordered_map<std::string, ValueSetter*>;

const SetterMap& settersByName() {
    static const auto& map = *[] {
        auto* const setters = new SetterMap;
        for (ValueSetter* const setter : SetterCollection::kAllValueSetters) {
            setters->emplace(setter->getNodeName(), setter);
        }
        return setters;
    }();
    return map;
}

ValueSetter* setterOf(const std::string& name) {
    const auto found = settersByName().find(name);
    return found == settersByName().end() ? nullptr : found->second;
}

ReadAs kindOf(std::string_view name) {
    static constexpr std::pair<std::string_view, ReadAs> kKinds[] = {
            {"format_version", ReadAs::VERSION}, {"tool_version", ReadAs::VERSION},
            {"global_setting", ReadAs::SETTING}, {"preset", ReadAs::PRESET},
            {"profile", ReadAs::PROFILE},        {"endpoint_type", ReadAs::ENDPOINT},
            {"include", ReadAs::INCLUDE},        {"tuning", ReadAs::TUNING},
            {"device_id", ReadAs::DEVICE},
    };
    for (const auto& [known, kind] : kKinds) {
        if (name == known) {
            return kind;
        }
    }
    return ReadAs::NOTHING;
}

/** Keeps libxml2 from writing to stderr while it lives, and remembers what it said first. */
class FirstError {
  public:
    FirstError() : mHandler(xmlStructuredError), mContext(xmlStructuredErrorContext) {
        xmlSetStructuredErrorFunc(this, keep);
    }
    FirstError(const FirstError&) = delete;
    FirstError& operator=(const FirstError&) = delete;
    ~FirstError() { xmlSetStructuredErrorFunc(mContext, mHandler); }

    /** ":LINE: what"; empty if there was no error. */
    const std::string& text() const { return mText; }

  private:
    static void keep(void* self, XmlError* error) {
        std::string& text = static_cast<FirstError*>(self)->mText;
        if (text.empty() && error->level >= XML_ERR_ERROR && error->message != nullptr) {
            text = ":" + std::to_string(error->line) + ": " + error->message;
            text.erase(text.find_last_not_of('\n') + 1);
        }
    }

    std::string mText;
    xmlStructuredErrorFunc mHandler;
    void* mContext;
};

struct DocumentDeleter {
    void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
};

/** Where the elements of a document stand: by number the line, and the number of the parent. */
struct Outline {
    std::vector<long> lines;
    std::vector<size_t> parents;
};

Outline outlineOf(const std::string& text) {
    Outline outline;
    const std::unique_ptr<xmlDoc, DocumentDeleter> document(
            xmlReadMemory(text.data(), static_cast<int>(text.size()), "noname.xml", nullptr,
                          XML_PARSE_BIG_LINES));
    xmlNode* const root = document == nullptr ? nullptr : xmlDocGetRootElement(document.get());
    std::unordered_map<const xmlNode*, size_t> numbers;
    forEachElement(root, [&](const xmlNode* node) {
        const auto parent = numbers.find(node->parent);
        outline.parents.push_back(parent == numbers.end() ? ReadElement::kNoElement
                                                          : parent->second);
        outline.lines.push_back(xmlGetLineNo(node));
        numbers.emplace(node, numbers.size());
    });
    std::vector<long> lines = startTagLines(text);
    if (lines.size() == outline.lines.size()) {
        outline.lines = std::move(lines);
    }
    return outline;
}

}  // namespace

/**
 * Watches the steps of the reader. The reader remembers its position when it enters a section or
 * reads a parameter of several elements, so the positions tell what an element is part of.
 */
class ReadTrace::Walker : public TagIterator {
  public:
    explicit Walker(const Outline& outline) : mParents(outline.parents) {
        for (const long line : outline.lines) {
            ReadElement& element = mElements.emplace_back();
            element.index = mElements.size() - 1;
            element.line = line;
        }
    }

    void childrenNext() override {
        ReadElement* const before = currentElement();
        TagIterator::childrenNext();
        if (before != nullptr) {
            const bool stays = currentElement() == before;
            (stays ? before->isStray : before->isEntered) = true;
        }
    }

    void pushNode() override {
        TagIterator::pushNode();
        const ReadElement* const element = currentElement();
        if (element != nullptr && element == mReading) {
            mFrames.push_back({element, element->section, element->setter, false});
        } else {
            mFrames.push_back({element, frameSection(), nullptr, false});
        }
        mReading = nullptr;
    }

    void popNode() override {
        TagIterator::popNode();
        if (!mFrames.empty()) {
            mFrames.pop_back();
        }
    }

    /** The reader looks at the name of every node that it finds valid. */
    bool isCurValid() override {
        if (ReadElement* const element = currentElement(); element != nullptr) {
            element->isNamed = true;
            mLine = element->line;
            noteParameter(*element, TagIterator::getNodeName());
        }
        return TagIterator::isCurValid();
    }

    void parseNodeWithName(const std::vector<std::string>& names,
                           std::vector<std::string>& out) override {
        TagIterator::parseNodeWithName(names, out);
        if (ReadElement* const element = currentElement(); element != nullptr) {
            noteAttributes(*element, names);
            noteReading(*element, names, out);
        }
    }

    std::vector<std::string> getAttrsName() override {
        if (ReadElement* const element = currentElement(); element != nullptr) {
            element->as = kindOf(readName());
            element->attributes = &*mAsked.emplace().first;
        }
        return TagIterator::getAttrsName();
    }

    void parseNodeIntVector(std::vector<int>& out) override {
        TagIterator::parseNodeIntVector(out);
        if (ReadElement* const element = currentElement(); element != nullptr) {
            element->isReadWhole = true;
        }
    }

    /** Where the reader has come to. */
    long getLine() const { return mLine; }

    /** The walk ends within a section only where its tuning has no data. */
    size_t getStop() const { return frameSection(); }

    std::deque<ReadElement> mElements;
    std::vector<ReadSection> mSections;

  private:
    struct Frame {
        const ReadElement* element;
        size_t section;
        /** The setter that reads there; null where the document's parser does. */
        ValueSetter* setter;
        /** Whether the section begins at the element. */
        bool isSection;
    };

    ReadElement* currentElement() {
        const size_t number = getElementsBefore();
        return isElementNode() && number < mElements.size() ? &mElements[number] : nullptr;
    }

    size_t parentOf(size_t element) const {
        return element < mParents.size() ? mParents[element] : ReadElement::kNoElement;
    }

    size_t frameSection() const {
        return mFrames.empty() ? ReadElement::kNoSection : mFrames.back().section;
    }

    ReadSection& beginSection(ReadElement& element, ReadAs kind) {
        element.as = kind;
        element.section = mSections.size();
        mSections.push_back({kind, element.index, nullptr, {}, {}, 0});
        return mSections.back();
    }

    /** An element whose name is looked at among a section's children is a parameter's. */
    void noteParameter(ReadElement& element, const std::string& name) {
        if (mFrames.empty() || !mFrames.back().isSection) {
            return;
        }
        ValueSetter* const setter = setterOf(name);
        mReading = setter == nullptr ? nullptr : &element;
        if (setter == nullptr) {
            return;
        }
        element.as = ReadAs::PARAMETER;
        element.setter = setter;
        element.section = mFrames.back().section;
        ReadSection& section = mSections[element.section];
        noteGiver(section, *setter, element);
        const size_t parent = parentOf(element.index);
        const size_t owner = section.as == ReadAs::TUNING ? parentOf(parent) : parent;
        section.strays += owner != section.element ? 1 : 0;
    }

    static void noteGiver(ReadSection& section, const ValueSetter& setter,
                          const ReadElement& element) {
        for (const Parameter param : setter.getParams()) {
            section.givers[param] = element.index;
        }
    }

    void noteAttributes(ReadElement& element, const std::vector<std::string>& names) {
        if (names.empty()) {
            element.isReadFirst = true;
            return;
        }
        // Elements of a kind come in runs, and are asked for the same.
        if (element.attributes == nullptr && mLastAsked != nullptr && names == mLastNames) {
            element.attributes = mLastAsked;
            return;
        }
        mLastNames = names;
        std::set<std::string> asked(names.begin(), names.end());
        if (element.attributes != nullptr) {
            asked.insert(element.attributes->begin(), element.attributes->end());
        }
        const bool isMerged = element.attributes != nullptr;
        element.attributes = &*mAsked.insert(std::move(asked)).first;
        mLastAsked = isMerged ? nullptr : element.attributes;
    }

    void noteReading(ReadElement& element, const std::vector<std::string>& names,
                     const std::vector<std::string>& texts) {
        Frame* const frame = mFrames.empty() ? nullptr : &mFrames.back();
        if (frame != nullptr && frame->setter != nullptr) {
            notePart(element, *frame);
            return;
        }
        if (&element == mReading) {
            return;
        }
        const ReadAs kind = kindOf(readName());
        switch (kind) {
            case ReadAs::PRESET:
                notePreset(element, texts);
                break;
            case ReadAs::PROFILE:
            case ReadAs::ENDPOINT:
            case ReadAs::TUNING:
                noteSection(element, kind, names, texts);
                break;
            case ReadAs::DEVICE:
                beginSection(element, kind);
                break;
            case ReadAs::SETTING:
                element.as = kind;
                if (isGiven(names, texts, "virtual_bass_process")) {
                    mVirtualBassSetting = element.index;
                }
                break;
            default:
                element.as = kind;
                break;
        }
    }

    /** A band or a row of the parameter that is being read. */
    void notePart(ReadElement& element, const Frame& frame) {
        element.as = element.isReadFirst ? ReadAs::ROW : ReadAs::BAND;
        element.section = frame.section;
        element.setter = frame.setter;
        ReadSection& section = mSections[frame.section];
        if (section.as == ReadAs::PRESET &&
            section.givers.count(frame.setter->getParams().front()) == 0) {
            const size_t bands = parentOf(element.index);
            noteGiver(section, *frame.setter,
                      bands == ReadElement::kNoElement ? element : mElements[bands]);
        }
    }

    /** A preset's type is the name of the setter that reads it, from the preset itself. */
    void notePreset(ReadElement& element, const std::vector<std::string>& texts) {
        element.as = ReadAs::PRESET;
        element.setter = setterOf(texts.back());
        if (dynamic_cast<const PresetBandsValueSetter*>(element.setter) != nullptr) {
            beginSection(element, ReadAs::PRESET).givers[IEQ_ID] = element.index;
            mReading = &element;
        }
    }

    void noteSection(ReadElement& element, ReadAs kind, const std::vector<std::string>& names,
                     const std::vector<std::string>& texts) {
        if (mFrames.empty() || mFrames.back().element != &element) {
            return;
        }
        const size_t outer = mFrames.back().section;
        ReadSection& section = beginSection(element, kind);
        if (kind == ReadAs::ENDPOINT) {
            section.outerGivers = mSections[outer].givers;
            if (mVirtualBassSetting != ReadElement::kNoElement) {
                section.givers[VIRTUAL_BASS_TYPE] = mVirtualBassSetting;
            }
        } else if (kind == ReadAs::TUNING) {
            if (isGiven(names, texts, "orientation")) {
                section.givers[ORIENTATION] = element.index;
            }
            if (isGiven(names, texts, "output_channels")) {
                section.givers[OUTPUT_CHANNELS] = element.index;
            }
        }
        mFrames.back().section = element.section;
        mFrames.back().isSection = true;
    }

    /** Whether the attribute of a name is among those read, and has a text. */
    static bool isGiven(const std::vector<std::string>& names,
                        const std::vector<std::string>& texts, std::string_view name) {
        for (size_t i = 0; i < std::min(names.size(), texts.size()); ++i) {
            if (names[i] == name) {
                return !texts[i].empty();
            }
        }
        return false;
    }

    const std::vector<size_t> mParents;
    std::vector<Frame> mFrames;
    /** The element that a setter is reading, until it goes into it. */
    const ReadElement* mReading = nullptr;
    long mLine = 0;
    size_t mVirtualBassSetting = ReadElement::kNoElement;
    std::set<std::set<std::string>> mAsked;
    std::vector<std::string> mLastNames;
    const std::set<std::string>* mLastAsked = nullptr;
};

ParameterOwner ownerOf(ReadAs section) {
    switch (section) {
        case ReadAs::PROFILE:
            return ParameterOwner::PROFILE;
        case ReadAs::ENDPOINT:
            return ParameterOwner::PROFILE_ENDPOINT;
        case ReadAs::TUNING:
            return ParameterOwner::TUNING;
        default:
            return ParameterOwner::NONE;
    }
}

std::string readDocument(const std::string& path) {
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0) {
        throw std::runtime_error(path + ": " + std::generic_category().message(errno));
    }
    if (!S_ISREG(status.st_mode)) {
        throw std::runtime_error(path + ": not a regular file");
    }
    std::ifstream file(path, std::ios::binary);
    std::string text(static_cast<size_t>(status.st_size), '\0');
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    if (!file) {
        throw std::runtime_error(path + ": " + std::generic_category().message(errno));
    }
    return text;
}

ReadTrace::ReadTrace(const std::string& path) : ReadTrace(path, readDocument(path)) {}

ReadTrace::ReadTrace(const std::string& path, const std::string& text) {
    const FirstError error;
    auto walker = std::make_unique<Walker>(outlineOf(text));
    mWalker = walker.get();
    mParser = std::make_unique<TuningFileParser>(std::move(walker));
    if (mParser->setTuningFile(text, true) != 0) {
        const std::string reason = error.text().empty() ? ": " + mParser->getError() : error.text();
        throw RefusedDocument(path + reason, mWalker->getLine());
    }
    matchObjects();
}

ReadTrace::~ReadTrace() = default;

DeviceData& ReadTrace::getDocument() {
    return *mParser->getDeviceData();
}

const std::deque<ReadElement>& ReadTrace::getElements() const {
    return mWalker->mElements;
}

const std::vector<ReadSection>& ReadTrace::getSections() const {
    return mWalker->mSections;
}

size_t ReadTrace::getStop() const {
    return mWalker->getStop();
}

/** The reader places objects of a kind in document order, which is that of their sections. */
template <typename Objects, typename Predicate>
void ReadTrace::match(const Objects& objects, Predicate isTheirs) {
    auto object = objects.begin();
    for (ReadSection& section : mWalker->mSections) {
        if (object != objects.end() && isTheirs(section)) {
            section.object = *object;
            mSectionOfObject[*object++] = &section;
        }
    }
}

void ReadTrace::matchObjects() {
    const auto isPreset = [this](ParameterOwner owner) {
        return [this, owner](const ReadSection& section) {
            ValueSetter* const setter = getElements()[section.element].setter;
            return section.as == ReadAs::PRESET &&
                   kParameterOwners[setter->getParams().front()] == owner;
        };
    };
    const auto is = [](ReadAs kind) {
        return [kind](const ReadSection& section) { return section.as == kind; };
    };
    const DeviceData& document = getDocument();
    match(document.getIeqPresets(), isPreset(ParameterOwner::IEQ_PRESET));
    match(document.getGeqPresets(), isPreset(ParameterOwner::GEQ_PRESET));
    match(document.getProfiles(), is(ReadAs::PROFILE));
    match(document.getProfileEndpoints(), is(ReadAs::ENDPOINT));
    match(document.getTunings(), is(ReadAs::TUNING));
    match(document.getDeviceTunings(), is(ReadAs::DEVICE));
}

const ReadSection* ReadTrace::sectionOf(const void* object) const {
    const auto found = mSectionOfObject.find(object);
    return found == mSectionOfObject.end() ? nullptr : found->second;
}

const ReadElement* ReadTrace::startOf(const ReadSection* section) const {
    return section == nullptr ? nullptr : &getElements()[section->element];
}

long ReadTrace::lineOf(const ParameterValues& object) const {
    const ReadElement* const element = startOf(sectionOf(&object));
    return element == nullptr ? 0 : element->line;
}

long ReadTrace::lineOf(const DeviceTuning& object) const {
    const ReadElement* const element = startOf(sectionOf(&object));
    return element == nullptr ? 0 : element->line;
}

long ReadTrace::lineOf(const ParameterValues& object, Parameter param) const {
    const ReadElement* const giver = giverOf(object, param);
    return giver == nullptr ? 0 : giver->line;
}

const ReadElement* ReadTrace::giverOf(const ParameterValues& object, Parameter param) const {
    const ReadSection* const section = sectionOf(&object);
    if (section == nullptr || object.getValues().count(param) == 0) {
        return nullptr;
    }
    const VersionRule* const rule = findVersionRule(mParser->getDeviceData()->getFormatVersion(),
                                                    ownerOf(section->as), param);
    const bool isOuter = rule != nullptr && rule->kind == VersionRuleKind::PROFILES_VALUE;
    if (rule != nullptr && !isOuter) {
        return nullptr;
    }
    const auto& givers = isOuter ? section->outerGivers : section->givers;
    if (const auto found = givers.find(param); found != givers.end()) {
        return &getElements()[found->second];
    }
    // An endpoint that says nothing of the one goes by the other.
    return param == MI_DIALOG_ENHANCER_STEERING_ENABLE ? giverOf(object, DIALOG_ENHANCER_ENABLE)
                                                       : nullptr;
}

}  // namespace ormel::tools
