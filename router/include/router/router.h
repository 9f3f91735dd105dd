// The native side's whole public surface: models, edit trees, datastore.
#ifndef ROUTER_ROUTER_H
#define ROUTER_ROUTER_H

#include "router/datastore.h"
#include "router/edit_node.h"
#include "router/error.h"
#include "router/models.h"

#endif
