#include "json.h"

PIKEL_JSON_MEMBERS()

namespace pikel::cli {

nlohmann::json JsonObject(std::initializer_list<JsonField> fields) {
    nlohmann::json object = nlohmann::json::object();
    for (const JsonField& field : fields) {
        object[field.name] = field.value;
    }
    return object;
}

}  // namespace pikel::cli
