#pragma once
#include <QLoggingCategory>

// The clipboard history's trace ("orlo.clipboard"), off unless the logging rules enable it.
Q_DECLARE_LOGGING_CATEGORY(lcClipboard)
