// The reverse mapper of an interface's MACsec settings. The leaves of psk-key-chain map themselves.
#include "frame.h"

OC_MACSEC_EXPORT rcode ymap_to_ocmacsec_interfaces_interface_mka_rev(CONTAINER_PARAMETERS)
{
    ENTER_FUNCTION(ctx, node, out, CONTAINER_SIGNATURE);
    if (child_count == 0) {
        TQM_TRC(ctx, "%s:%d, No subtrees", __func__, __LINE__);
    } else {
        TQM_TRC(ctx, "%s:%d, No mapping done for this node", __func__, __LINE__);
    }
    LEAVE_MAPPER(ctx, 0);
}
