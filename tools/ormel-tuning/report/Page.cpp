#include "Page.h"

#include <kainjow/mustache.hpp>
#include <stdexcept>

#include "EmbeddedText.h"
#include "text/Text.h"

namespace ormel::tools {

namespace {

namespace mustache = kainjow::mustache;

/** What stands under these names is markup that the tool made itself. */
bool isMarkup(const std::string& name) {
    return name == "svg" || name == "defs";
}

mustache::data toData(const Json& json) {
    switch (json.type()) {
        case Json::value_t::object: {
            mustache::data object;
            for (const auto& [name, value] : json.items()) {
                object.set(name, isMarkup(name) ? value.get<std::string>() : toData(value));
            }
            return object;
        }
        case Json::value_t::array: {
            mustache::data list(mustache::data::type::list);
            for (const Json& value : json) {
                list.push_back(toData(value));
            }
            return list;
        }
        case Json::value_t::string:
            return printable(json.get<std::string>());
        case Json::value_t::boolean:
            return json.get<bool>();
        case Json::value_t::null:
            return false;
        default:
            return json.dump();
    }
}

}  // namespace

std::string pageOf(const Json& content) {
    mustache::mustache page(pageText());
    // What is not UTF-8, in the name of a file or a document's bytes, appears replaced.
    const std::string valid = content.dump(-1, ' ', false, Json::error_handler_t::replace);
    std::string filled = page.render(toData(Json::parse(valid)));
    if (!page.is_valid()) {
        throw std::logic_error("the page's template: " + page.error_message());
    }
    return filled;
}

}  // namespace ormel::tools
