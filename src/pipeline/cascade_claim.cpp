#include "pipeline/cascade_claim.h"

namespace nuvrel::pipeline {

nlohmann::ordered_json CascadeClaim::toJson() const {
    nlohmann::ordered_json json{{"step", step}, {"matcher", matcher}};
    if (step != routerStep) json["value"] = value;
    return json;
}

}  // namespace nuvrel::pipeline
