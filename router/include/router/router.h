// The native side's whole public surface: models, edit trees, datastore.
#pragma once

#include "router/datastore.h"
#include "router/edit_node.h"
#include "router/error.h"
#include "router/models.h"
