// Placeholder until the simulator lands; replaced by the simulator sources.
