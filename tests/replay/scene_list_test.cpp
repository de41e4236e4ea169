// Filled once the container writer lands.
