#pragma once

class QWidget;

/// A part of a window that may have nothing to say to those who hear it; panels leave it out then.
class CanBeSilent
{
public:
    virtual bool isSilent() const = 0;
    /// A widget in it that is told in its place while it is silent; null for none.
    virtual QWidget* standIn() const { return nullptr; }

protected:
    ~CanBeSilent() = default;
};
