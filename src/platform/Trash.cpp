#include "Trash.h"

namespace {

Trash *replacement = nullptr;

} // namespace

bool Trash::moveToTrash(const QString &path, QString *error)
{
    return current().trashItem(path, error);
}

Trash &Trash::current()
{
    return replacement ? *replacement : platform();
}

void Trash::setCurrent(Trash *trash)
{
    replacement = trash;
}
