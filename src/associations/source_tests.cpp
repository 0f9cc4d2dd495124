#include "associations/source_tests.h"

#include "classes/instance.h"
#include "classes/system_name.h"
#include "flash/installer.h"

namespace merolt::association {

void theObject(const Source&, const ObjectVisitor& visit) { visit({}); }

bool namesHost(const Source& source) { return source.equals(0, gSystemName); }

bool namesHostAndClass(const Source& source) { return namesHost(source) && source.equals(1, computerSystemClass); }

bool namesInstaller(const Source& source) { return source.equals(0, flash::installerName); }

bool namesServiceOfHost(const Source& source) {
    return namesHostAndClass(source) && source.equals(2, flash::installerName);
}

} // namespace merolt::association
