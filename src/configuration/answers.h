// The form of those few answers that standard clients cannot use as the contract has them. The contract's form stands
// unless the host's settings ask for the corrected one; everything else is the same in both.
#pragma once

namespace merolt {

enum class Answers { asContract, corrected };

/// Read once, when the provider is constructed.
extern Answers gAnswers;

/// Reads the setting Answers of /etc/merolt/cim-provider.conf: "corrected", or "contract", which is the default. Any
/// other value is told in the error log and counts as the default.
void readAnswers();

/// Both forms of something, side by side at the family that they belong to.
template <class Form>
struct TwoForms {
    Form contract{};
    Form corrected{};

    constexpr const Form& chosen() const { return gAnswers == Answers::corrected ? corrected : contract; }
};

} // namespace merolt
