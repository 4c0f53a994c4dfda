#pragma once

#include <QComboBox>

#include <functional>

class QAction;

// A combo box whose list comes from a provider, read again each time the list opens (so a list
// edited elsewhere shows at once), with an optional button at the trailing end of its text box
// that runs a function of the program (a dialog that edits the list). Editable by default: typed
// text stays as typed and is never added to the list.
class TButtonComboBox : public QComboBox
{
    Q_OBJECT
public:
    explicit TButtonComboBox(QWidget* parent = nullptr);

    void setItemsProvider(std::function<QStringList()> provider);
    // Reads the provider again; the current text stays.
    void refreshItems();
    // Adds the button (once); onClick gets this combo. After it returns the list is read again.
    QAction* setButton(const QIcon& icon, const QString& toolTip,
                       std::function<void(TButtonComboBox*)> onClick);
    QAction* buttonAction() const { return m_button; }

    void showPopup() override;

    // The ellipsis glyph the toolkit uses for edit buttons, drawn in the palette's text colour.
    static QIcon editGlyph(const QPalette& palette, int size);

private:
    std::function<QStringList()> m_provider;
    QAction* m_button = nullptr;
};
