// Six families whose getInstance logs as another family, AssocObjectManagerNamespace, does.
#pragma once

#include "associations/texts.h"

namespace merolt::association {

inline constexpr Texts getInstanceAsObjectManagerNamespace = deviating(storageTexts, [](Texts& t) {
    t.getInstance.open = "Entering getInstance_AssocObjectManagerNamespace";
    t.getInstance.className = "getInstance_AssocObjectManagerNamespace: Error getting classname, status.rc={n}!";
    t.getInstance.key1 = "getInstance_AssocObjectManagerNamespace: Error getting keyData1, status.rc={n}!";
    t.getInstance.key1Type = "getInstance_AssocObjectManagerNamespace: Error invalid keyData1 type, keyData1.type={n}!";
    t.getInstance.key2 = "getInstance_AssocObjectManagerNamespace: Error getting keyData2, status.rc={n}!";
    t.getInstance.key2Type = "getInstance_AssocObjectManagerNamespace: Error invalid keyData2 type, keyData2.type={n}!";
    t.getInstance.close = "Exiting  getInstance_AssocObjectManagerNamespace";
});

} // namespace merolt::association
