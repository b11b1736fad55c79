#pragma once

/// Stands for the music program in the calls that edit its tracks. There is one, for the whole run.
class EyeTunes
{
public:
    static EyeTunes* sharedInstance();

    EyeTunes(const EyeTunes&) = delete;
    EyeTunes& operator=(const EyeTunes&) = delete;

private:
    EyeTunes() = default;
};
