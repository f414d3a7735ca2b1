#include "clipboard/ClipboardPicker.h"
#include "kit/SnapScreens.h"
#include "kit/Symbols.h"
#include "clipboard/ClipAssets.h"
#include "clipboard/ClipRow.h"
#include "clipboard/ClipboardLog.h"
#include "clipboard/ClipboardStore.h"
#include "clipboard/PickerPanel.h"
#include "platform/KeyboardLayout.h"
#include <QCursor>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QScreen>

namespace orlo {

namespace {
constexpr quint32 KeypadEnter = 76;
}  // namespace

std::optional<int> ClipboardPicker::digit(quint32 keyCode)
{
    static constexpr quint32 topRow[] = {18, 19, 20, 21, 23, 22, 26, 28, 25};
    static constexpr quint32 keypad[] = {83, 84, 85, 86, 87, 88, 89, 91, 92};
    for (int i = 0; i < 9; ++i)
        if (topRow[i] == keyCode || keypad[i] == keyCode) return i + 1;
    return std::nullopt;
}

ClipboardPicker::ClipboardPicker(ClipboardStore& store, Ports ports, QObject* parent)
    : QObject(parent), store_(store), ports_(ports), model_(store)
{
}

ClipboardPicker::~ClipboardPicker() = default;

PickerPanel* ClipboardPicker::panel() const { return panel_.get(); }

bool ClipboardPicker::isVisible() const { return open_; }

void ClipboardPicker::makePanel()
{
    panel_ = std::make_unique<PickerPanel>();
    rows_ = new ClipRow(model_, ports_.workspace, store_.imagesFolder(), panel_.get());
    QListView* list = panel_->list();
    list->setModel(&model_);
    list->setItemDelegate(rows_);
    panel_->searchField()->installEventFilter(this);
    list->installEventFilter(this);

    connect(panel_->searchField(), &QLineEdit::textChanged, &model_, &PickerModel::setQuery);
    connect(&model_, &PickerModel::selectionChanged, this, &ClipboardPicker::syncSelection);
    connect(&model_, &QAbstractItemModel::modelReset, this, [this] { syncSelection(model_.selection()); });
    connect(&model_, &QAbstractItemModel::modelReset, this, &ClipboardPicker::refreshEmptyText);
    connect(list, &QListView::clicked, this, [this](const QModelIndex& index) { choose(index.row(), false); });
    connect(list, &QListView::customContextMenuRequested, this, &ClipboardPicker::showMenu);
    connect(panel_.get(), &PickerPanel::deactivated, this, &ClipboardPicker::close);
    connect(panel_.get(), &PickerPanel::activated, this, [] { qCDebug(lcClipboard, "picker has the keyboard"); });
    connect(&ClipAssets::notifier(), &ClipAssets::Notifier::thumbnailReady, list->viewport(), qOverload<>(&QWidget::update));
}

void ClipboardPicker::prepare()
{
    if (!panel_) makePanel();
}

void ClipboardPicker::show()
{
    if (!panel_) makePanel();
    panel_->searchField()->blockSignals(true);
    panel_->searchField()->clear();
    panel_->searchField()->blockSignals(false);
    model_.setSelection(0);  // before the rows are brought up to date, which keeps the selection in view
    model_.setLive(true);
    model_.open();
    syncSelection(0);
    refreshEmptyText();
    panel_->showAccessibilityHint(needsAccessibilityHint && needsAccessibilityHint());

    QScreen* primary = QGuiApplication::primaryScreen();
    const QRectF primaryGeometry = primary ? QRectF(primary->geometry()) : QRectF();
    // Placed in Orlo's points, then moved with its screen to where Qt has that screen.
    const SnapScreens screens(ports_.screens);
    const QPointF pointer = QCursor::pos();
    const auto screen = screens.screenAtQtPoint(pointer);
    const QPointF shift = screen ? screens.qtShift(*screen) : QPointF();
    panel_->move(placement(pointer - shift, screens.all(), primaryGeometry) + shift.toPoint());
    open_ = true;
    panel_->show();
    panel_->raise();
    panel_->searchField()->setFocus();
    qCDebug(lcClipboard, "picker shown at %d,%d with %d rows", panel_->x(), panel_->y(), model_.count());
    emit shown();
}

void ClipboardPicker::close()
{
    if (!open_) return;
    // Hiding deactivates the panel, which asks to close again.
    open_ = false;
    panel_->hide();
    model_.setLive(false);
    qCDebug(lcClipboard, "picker closed");
    emit closed();
}

void ClipboardPicker::refreshEmptyText()
{
    if (panel_) panel_->showEmptyHistory(store_.items().isEmpty());
}

void ClipboardPicker::syncSelection(int row)
{
    if (!panel_ || row < 0 || row >= model_.count()) return;
    model_.reveal(row);
    const QModelIndex index = model_.index(row);
    panel_->list()->setCurrentIndex(index);
    panel_->list()->scrollTo(index);
}

void ClipboardPicker::choose(int row, bool plainText)
{
    if (row < 0 || row >= model_.count() || !onPaste) return;
    // Copy the item: pasting moves it in the history, which resets the rows.
    const ClipItem item = model_.item(row);
    onPaste(item, plainText);
}

bool ClipboardPicker::handleKey(QKeyEvent* event)
{
    const auto key = ports_.layout.keyEvent(*event);
    return key && handleKey(*key);
}

void ClipboardPicker::typeWhileOpening(const KeyEvent& key)
{
    if (!isVisible() || handleKey(key)) return;
    if (key.flags & (ModifierFlag::Control | ModifierFlag::Option | ModifierFlag::Command)) return;
    QLineEdit* search = panel_->searchField();
    if (key.keyCode == KeyCode::Delete) search->backspace();
    else search->insert(key.text);
}

bool ClipboardPicker::handleKey(const KeyEvent& key)
{
    const quint64 mods = key.flags & ModifierFlag::ShortcutMask;
    if (shortcut && *shortcut == KeyCombo{key.keyCode, mods}) {
        close();
        return true;
    }
    const int rows = model_.count();
    switch (key.keyCode) {
    case KeyCode::Return:
    case KeypadEnter:
        if (rows == 0 && model_.isFiltering()) model_.finishFiltering();
        if (model_.count() > 0) choose(model_.selection(), mods & ModifierFlag::Shift);
        return true;
    case KeyCode::Escape:
        close();
        return true;
    case KeyCode::DownArrow:
        if (rows > 0) model_.setSelection(std::min(model_.selection() + 1, rows - 1));
        return true;
    case KeyCode::UpArrow:
        model_.setSelection(std::max(model_.selection() - 1, 0));
        return true;
    case KeyCode::Delete:
        if (mods != ModifierFlag::Command) return false;
        if (rows > 0) {
            store_.deleteItem(model_.item(model_.selection()));
            model_.setSelection(std::min(model_.selection(), std::max(model_.count() - 1, 0)));
        }
        return true;
    default:
        break;
    }
    if (mods == ModifierFlag::Command && ports_.layout.character(key.keyCode).value_or(QString()).toLower() == QLatin1String("p")) {
        if (rows > 0) store_.togglePin(model_.item(model_.selection()));
        return true;
    }
    if (const auto n = digit(key.keyCode); n && mods == 0 && model_.query().isEmpty() && *n <= rows) {
        choose(*n - 1, false);
        return true;
    }
    return false;
}

bool ClipboardPicker::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::KeyPress && panel_ && (watched == panel_->searchField() || watched == panel_->list()))
        return handleKey(static_cast<QKeyEvent*>(event));
    return QObject::eventFilter(watched, event);
}

void ClipboardPicker::showMenu(const QPoint& at)
{
    const QModelIndex index = panel_->list()->indexAt(at);
    if (!index.isValid()) return;
    const ClipItem item = model_.item(index.row());
    const int row = index.row();
    QMenu menu(panel_.get());
    menu.addAction(tr("Paste"), this, [this, row] { choose(row, false); });
    menu.addAction(tr("Paste as Plain Text"), this, [this, row] { choose(row, true); });
    menu.addSeparator();
    menu.addAction(symbolIcon(QStringLiteral("pin")), item.pinned ? tr("Unpin") : tr("Pin"), this,
                   [this, item] { store_.togglePin(item); });
    menu.addAction(symbolIcon(QStringLiteral("trash")), tr("Delete"), this, [this, item] { store_.deleteItem(item); });
    menu.exec(panel_->list()->viewport()->mapToGlobal(at));
    // The menu took the keyboard from the panel, and gave it back to no one.
    if (panel_->isVisible()) panel_->holdKeyboard();
}

QPoint ClipboardPicker::placement(QPointF pointer, const QList<ScreenInfo>& screens, const QRectF& primaryGeometry)
{
    constexpr double w = PickerPanel::Width, h = PickerPanel::Height, margin = 8;
    // Into screen coordinates: origin at the primary screen's bottom left, y up.
    const QPointF mouse(pointer.x() - primaryGeometry.x(), primaryGeometry.bottom() - pointer.y());
    double x = mouse.x() - 24;
    double y = mouse.y() - h + 12;
    if (!screens.isEmpty()) {
        const ScreenInfo* screen = &screens.first();
        for (const ScreenInfo& s : screens) {
            const QRectF& f = s.frame;
            // f.top() is the lower edge: y grows upwards.
            if (mouse.x() >= f.left() && mouse.x() < f.right() && mouse.y() > f.top() && mouse.y() <= f.bottom()) {
                screen = &s;
                break;
            }
        }
        const QRectF& visible = screen->visibleFrame;
        x = std::min(std::max(x, visible.left() + margin), visible.right() - w - margin);
        y = std::min(std::max(y, visible.top() + margin), visible.bottom() - h - margin);
    }
    // Back to the window system's coordinates, y down, of the panel's top-left corner.
    return QPoint(int(std::lround(x + primaryGeometry.x())), int(std::lround(primaryGeometry.bottom() - (y + h))));
}

}  // namespace orlo
