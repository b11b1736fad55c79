#pragma once

/// A part of a window that may have nothing to say to those who hear it; panels leave it out then.
class CanBeSilent
{
public:
    virtual bool isSilent() const = 0;

protected:
    ~CanBeSilent() = default;
};
