/* Preloaded: a system on which /pkg/yang/openconfig-macsec.yang is not installed. */
#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <sys/stat.h>

int stat(const char *restrict path, struct stat *restrict status)
{
    if (strcmp(path, "/pkg/yang/openconfig-macsec.yang") == 0) {
        errno = ENOENT;
        return -1;
    }
    return fstatat(AT_FDCWD, path, status, 0);
}
