#pragma once
#include <QLoggingCategory>

// The system tools' trace ("orlo.system"), off unless asked for; session tests read it.
Q_DECLARE_LOGGING_CATEGORY(lcSystem)
