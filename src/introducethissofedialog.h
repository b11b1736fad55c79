#pragma once

#include "common/qimagedialog.h"

#include <memory>

namespace Ui {
class IntroduceThisSofeDialog;
}

/// The about box.
class IntroduceThisSofeDialog : public QImageDialog
{
    Q_OBJECT

public:
    explicit IntroduceThisSofeDialog(QWidget* parent = nullptr);
    ~IntroduceThisSofeDialog() override;

private slots:
    void SlotOnBtnOk();

private:
    void InitText();

    std::unique_ptr<Ui::IntroduceThisSofeDialog> ui;
};
