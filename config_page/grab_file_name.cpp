#include "config_page/grab_file_name.h"

QByteArray grabFileName(QByteArray const& present, QByteArray const& serialNumber) {
    int separator = present.lastIndexOf('/');
    if (separator < 0)
        separator = present.lastIndexOf('\\');
    return present.left(separator + 1) + serialNumber + '_'; // none: the number alone
}
