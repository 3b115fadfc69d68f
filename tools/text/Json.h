// What the commands answer --json with.
#pragma once

#include <nlohmann/json.hpp>
#include <ostream>

namespace ormel::tools {

/** Keys stay in the order in which they were added, so that they stand the same in every output. */
using Json = nlohmann::ordered_json;

/** Prints a document of its own. What is not UTF-8 in a file's name appears replaced. */
inline void printJson(const Json& json, std::ostream& out) {
    out << json.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

}  // namespace ormel::tools
