// Host integration point: the capture library's component base.
//
// Every object the host can describe in JSON is a component with an id that a
// deserializer may set. A parser is the component of kind 0.
#pragma once

#include <string>

namespace qvx::core {

class TrovaneComponent {
  public:
    enum class Kind : int { Parser = 0 };

    explicit TrovaneComponent(Kind kind) : kind_(kind) {}
    TrovaneComponent(const TrovaneComponent&) = delete;
    TrovaneComponent& operator=(const TrovaneComponent&) = delete;
    virtual ~TrovaneComponent() = default;

    // Empty until a deserializer sets it.
    virtual const std::string& getComponentId() const { return componentId_; }
    void setComponentId(std::string id) { componentId_ = std::move(id); }
    Kind kind() const noexcept { return kind_; }

  private:
    std::string componentId_;
    Kind kind_;
};

}  // namespace qvx::core
