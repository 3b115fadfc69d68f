// The words for the library's numbers.
#pragma once

#include <ormel/KivParameter.h>
#include <ormel/Parameter.h>
#include <ormel/SpatializerProfile.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ormel::tools {

/**
 * Index of a name among all of its kind. One that is not there throws std::runtime_error, which
 * says what there is, @p others behind it.
 */
size_t indexOf(const std::string& name, const std::string& kind,
               const std::vector<std::string>& names, const std::string& others = "");

// By name, a profile and a device by its number as well. Any other text throws like indexOf().
OrmSpatializerProfileId profileOf(const std::string& text);
Port portOf(const std::string& text);
/** An Android output device; the blanks of its name may be given as underscores. */
int32_t deviceOf(const std::string& text, const std::string& others = "");

/** The effect parameter of a code. */
std::optional<KivParameter> paramOf(int32_t code);

/** The code of an effect parameter, by its letters. */
int32_t codeOf(const std::string& letters);

/** The names of the profiles that have some, by number. */
std::vector<std::string> profileNames();

/** The names of the output devices that have some, without blanks. */
std::vector<std::string> deviceNames();

/** A profile's name, or its number if it has none. */
std::string profileText(OrmSpatializerProfileId profile);

/** An Android output device in words, or in hex if there are none for it. */
std::string deviceText(int32_t device);

struct CodeText {
    std::string letters;
    std::string meaning;
};

/** What an effect parameter's code reads as and means; a code that is none reads in hex. */
CodeText codeText(int32_t code);

}  // namespace ormel::tools
