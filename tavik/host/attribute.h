// A fact that the kernel may not give: the value, or the reason why there is none.
#pragma once

#include <string>
#include <type_traits>
#include <utility>
#include <variant>

namespace tavik::host {

/** Why a fact is missing, in words for whoever reads a dump: "No such file or directory". */
struct Absence {
    std::string reason;

    bool operator==(const Absence&) const = default;
};

template <typename Value>
class Attribute {
public:
    Attribute() = default;
    Attribute(Value value) : content_(std::move(value)) {}
    Attribute(Absence absence) : content_(std::move(absence)) {}

    bool present() const { return std::holds_alternative<Value>(content_); }
    explicit operator bool() const { return present(); }

    /** Only if present. */
    const Value& operator*() const { return std::get<Value>(content_); }
    const Value* operator->() const { return &std::get<Value>(content_); }

    Value valueOr(Value otherwise) const { return present() ? **this : std::move(otherwise); }

    /** Only if absent. */
    const Absence& absence() const { return std::get<Absence>(content_); }

    /** What the function makes of the value, which may be absent too; an absence passes on with its reason. */
    template <typename Function>
    auto then(Function&& function) const
        -> Attribute<typename std::invoke_result_t<Function, const Value&>::ValueType> {
        if (!present()) return absence();
        return std::forward<Function>(function)(**this);
    }

    using ValueType = Value;

    bool operator==(const Attribute&) const = default;

private:
    std::variant<Absence, Value> content_{Absence{"not read"}};
};

} // namespace tavik::host
