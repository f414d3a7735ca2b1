// A browser's answer to the listing of its tabs, which any page's title can shape.
#include "FuzzInput.h"
#include "switcher/BrowserTabs.h"

using orlo::fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString answer = QString::fromUtf8(reinterpret_cast<const char*>(data), qsizetype(size));
    const QString browser = QStringLiteral("com.google.Chrome");
    const auto tabs = orlo::BrowserTabs::parse(browser, answer);
    require(tabs.size() <= answer.count(QChar(30)) + 1, "at most one tab a record");
    for (const auto& tab : tabs) require(tab.bundleID == browser && !tab.title.isEmpty(), "every tab has its browser and a title");
    return 0;
}
