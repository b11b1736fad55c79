// Where there is no trash of the kind that we know.
#include "base/trash.h"

using base::Trash;

struct Trash::Places
{
};

Trash::Trash() = default;

Trash::~Trash() = default;

Trash::Taking Trash::take(const std::string&, const FileState&, TrashedFile&, std::string& error,
                          const Announce&)
{
    error = "there is no trash";
    return Taking::NoTrash;
}

Trash::Restoring Trash::restore(const TrashedFile&, std::string& error)
{
    error = "there is no trash";
    return Restoring::Failed;
}
