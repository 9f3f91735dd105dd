/* The surface alone, for a framework or a plug-in in C. */
#include <tqm_map.h>
#include <tqm_rcode.h>

int main(void)
{
    tqm_map_reg_info info = {.forward_root = 0};
    return info.forward_root == 0 ? 0 : 1;
}
