#include "config_page/grab_file_name.h"

#include "common/system.h"

namespace {

int lastOf(char separator, QByteArray const& path) {
    int last = -1;
    for (int i = 0; i < path.size(); i += beginsTwoByteLetter(path[i]) ? 2 : 1)
        if (path[i] == separator)
            last = i;
    return last;
}

} // namespace

QByteArray grabFileName(QByteArray const& present, QByteArray const& serialNumber) {
    int separator = lastOf('/', present);
    if (separator < 0)
        separator = lastOf('\\', present);
    return present.left(separator + 1) + serialNumber + '_'; // none: the number alone
}
