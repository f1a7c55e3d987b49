import { start } from './start';

start();
