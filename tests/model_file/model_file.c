/* Preloaded into the tests: a system on which the model is installed where the plug-in looks for it. What stat() tells
 * of /pkg/yang/openconfig-macsec.yang it tells of the file that OC_MACSEC_MODEL_FILE names, or of the one in the
 * sources. */
#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>

int stat(const char *restrict path, struct stat *restrict status)
{
    if (strcmp(path, "/pkg/yang/openconfig-macsec.yang") == 0) {
        const char *model = getenv("OC_MACSEC_MODEL_FILE");
        path = model != NULL ? model : MODEL_FILE;
    }
    return fstatat(AT_FDCWD, path, status, 0);
}
