#pragma once

#include <QComboBox>

/// A box that opens its list in the colours of the kit, which are readable whatever look a style sheet gives
/// the box.
class DropDownBox : public QComboBox
{
    Q_OBJECT

public:
    using QComboBox::QComboBox;

    void showPopup() override;

private:
    void dressList();

    bool m_bListDressed = false; ///< not before it shows first, which costs the start nothing
};
