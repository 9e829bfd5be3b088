#pragma once

/// What the system wants set before there is an application. Call it first.
void prepareStart();
