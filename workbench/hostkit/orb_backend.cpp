#include "workbench/hostkit/orb_backend.h"

OrbBackendListener::OrbBackendListener() = default;
OrbBackendListener::~OrbBackendListener() = default;

OrbBackend::~OrbBackend() = default;
