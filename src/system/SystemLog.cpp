#include "system/SystemLog.h"

Q_LOGGING_CATEGORY(lcSystem, "orlo.system", QtWarningMsg)
