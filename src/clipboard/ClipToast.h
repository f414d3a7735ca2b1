#pragma once
#include <QWidget>

namespace orlo {

// A short message near the pointer that goes away by itself after 2.5 seconds and never
// takes the keyboard or the mouse.
class ClipToast : public QWidget {
    Q_OBJECT
public:
    static constexpr int DurationMs = 2500;
    // Shows a toast centred horizontally on the pointer; it deletes itself when it closes.
    static ClipToast* show(const QString& text);

    QString text() const { return text_; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    explicit ClipToast(QString text);
    QString text_;
};

}  // namespace orlo
