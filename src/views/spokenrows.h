#pragma once

#include <QString>

/// A model whose rows can be heard.
class SpokenRows
{
public:
    virtual ~SpokenRows() = default;

    /// What tells a row of the model from others, and all else there is to say of it. Empty for one without
    /// a song.
    virtual QString nameOf(int row) const = 0;
    virtual QString restOf(int row) const = 0;
};
