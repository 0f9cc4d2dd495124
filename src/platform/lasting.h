// Objects that stand until the process is gone: a server may exit without cleaning up, while threads still use them.
#pragma once

namespace merolt::platform {

/// Static storage for a value that no destructor ends. Nothing that the value owns is given back.
template <class Value>
union Lasting {
    constexpr Lasting() : value() {}
    ~Lasting() {} // NOLINT(modernize-use-equals-default): that of a union would be deleted

    Value value;
};

} // namespace merolt::platform
