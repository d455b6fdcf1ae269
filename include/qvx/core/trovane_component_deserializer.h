// Host integration point: the capture library's component deserializer.
//
// The host's capture library builds and updates components from JSON
// descriptions by asking each registered deserializer whether it handles a
// description's "type" or an existing component. Failures are thrown as
// `std::invalid_argument` and end at the host boundary.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "qvx/core/context.h"
#include "qvx/core/json_value.h"
#include "qvx/core/trovane_component.h"

namespace qvx::core {

class TrovaneComponentDeserializer {
  public:
    TrovaneComponentDeserializer() = default;
    TrovaneComponentDeserializer(const TrovaneComponentDeserializer&) = delete;
    TrovaneComponentDeserializer& operator=(const TrovaneComponentDeserializer&) = delete;
    virtual ~TrovaneComponentDeserializer() = default;

    virtual bool isTypeSupported(const std::string& type) const = 0;
    virtual bool isComponentSupported(const std::shared_ptr<TrovaneComponent>& component) const = 0;
    // Builds a new component from a description.
    virtual std::shared_ptr<TrovaneComponent> createComponentFromJson(
        const std::shared_ptr<Context>& context, const std::shared_ptr<JsonValue>& json) = 0;
    // Applies a description to an existing component and returns it.
    virtual std::shared_ptr<TrovaneComponent> updateComponentFromJson(
        const std::shared_ptr<TrovaneComponent>& component,
        const std::shared_ptr<JsonValue>& json) = 0;
    // What the last successful call had to say, such as unused keys.
    virtual std::vector<std::string> getWarnings() const = 0;
};

}  // namespace qvx::core
