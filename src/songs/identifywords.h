#pragma once

#include "common/footline.h"

/// What the foot of the window says of identifications, one after the other.
class IdentifyWords
{
public:
    /// `status` is the identifier's (IdentifyStatus). Where only the tags could tell, for want of a key, the
    /// first text says what a key would add.
    FootText of(int status, bool hasKey);

private:
    bool m_keyOffered = false;
};
