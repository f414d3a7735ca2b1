#include "clipboard/ClipboardLog.h"

Q_LOGGING_CATEGORY(lcClipboard, "orlo.clipboard", QtWarningMsg)
