#include "app/ModuleHeader.h"
#include "app/AppModel.h"
#include "kit/Symbols.h"
#include "kit/ToggleSwitch.h"
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace orlo {

ModuleHeader::ModuleHeader(AppModel& model, OrloModule& module, QWidget* parent) : QWidget(parent)
{
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 8);
    auto* icon = new QLabel(this);
    icon->setPixmap(symbolPixmap(module.symbol(), 32, palette().color(QPalette::Highlight)));
    auto* texts = new QVBoxLayout;
    auto* title = new QLabel(module.title(), this);
    QFont big = title->font();
    big.setPointSizeF(big.pointSizeF() * 1.4);
    big.setBold(true);
    title->setFont(big);
    auto* summary = new QLabel(module.summary(), this);
    summary->setWordWrap(true);
    texts->addWidget(title);
    texts->addWidget(summary);
    auto* toggle = new ToggleSwitch(this);
    toggle->setObjectName(module.id());
    toggle->setAccessibleName(module.title());
    row->addWidget(icon, 0, Qt::AlignTop);
    row->addLayout(texts, 1);
    row->addWidget(toggle, 0, Qt::AlignTop);

    toggle->show(module.isEnabled());
    connect(toggle, &ToggleSwitch::toggled, this, [&model, &module](bool on) { model.setModuleEnabled(module, on); });
    connect(&model, &AppModel::revisionChanged, toggle, [toggle, &module] { toggle->show(module.isEnabled()); });
}

}  // namespace orlo
