import { start } from './start';

// The page of the simulated TV loads this script too, for what both need.
const root = document.getElementById('settings');
if (root !== null) {
    start(root);
}
