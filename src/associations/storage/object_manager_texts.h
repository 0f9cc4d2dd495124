// Six families whose getInstance logs as another family, AssocObjectManagerNamespace, does.
#pragma once

#include "associations/texts.h"

namespace merolt::association {

inline constexpr Texts getInstanceAsObjectManagerNamespace =
    deviating(storageTexts, [](Texts& t) { t.getInstance.token = "AssocObjectManagerNamespace"; });

} // namespace merolt::association
