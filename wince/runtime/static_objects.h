#pragma once

/// Runs the initialisers of the image, in the order of the link.
void buildStaticObjects();

/// Runs the destructors that the initialisers have registered, the last one first.
void destroyStaticObjects();
